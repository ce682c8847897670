#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;

// The command line: the window mode (no command) and the commands that run without a display.
// Exit codes: 0 success, 1 the work failed, 2 a usage error.
class CommandLine {
public:
    enum ExitCode { Success = 0, Failure = 1, UsageError = 2 };

    // Whether these arguments (program name first) ask for something that needs no display: a
    // command, or help or the version.
    static bool isHeadless(const QStringList &arguments);
    // Runs a headless request; a QCoreApplication must exist.
    static int runHeadless(const QStringList &arguments);

    // The options shared by the window and the commands.
    struct SharedOptions {
        QString definitionsFolder;
        QString dataFolder;
        std::optional<float> timeoutSeconds;
    };
    static void addSharedOptions(QCommandLineParser &parser);
    // Reads the shared options; an invalid value gives none and an error text.
    static std::optional<SharedOptions> readSharedOptions(const QCommandLineParser &parser,
                                                          QString *error);
    // Makes the definitions folder known to the loader (the data folder and time-out are applied
    // by whoever owns them).
    static void applyDefinitionsFolder(const SharedOptions &options);

    // Prints a command's help when it was asked for (--help or --help-all), with the usage line
    // as the user types it ("vantorel fetch ..."); true when it did.
    static bool printCommandHelp(const QCommandLineParser &parser, const QString &command);

    static QStringList commandNames();
    static QString applicationDescription();
    static QString versionText();

private:
    static int printHelp(const QStringList &arguments);
};
