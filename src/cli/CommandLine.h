#pragma once

#include "cli/SharedOptions.h"

#include <QStringList>

#include <optional>

// The program's command line: the window mode (no command) and the commands that run without a
// display. It knows every command and hands the arguments to the one named; what the commands
// share (help, version, usage errors, output) is in Command.
class CommandLine {
public:
    // Whether these arguments (program name first) ask for something that needs no display: a
    // command, or help or the version.
    static bool isHeadless(const QStringList &arguments);
    // Runs a headless request and gives the exit code; a QCoreApplication must exist.
    static int runHeadless(const QStringList &arguments);

    // The options of the window mode; none after a usage error, which has been printed (the exit
    // code is then Command::UsageError).
    static std::optional<SharedOptions> windowOptions(const QStringList &arguments);

private:
    static int printHelp(const QStringList &arguments);
};
