#pragma once

#include "cli/SharedOptions.h"

#include <QString>
#include <QStringList>

#include <cstdio>

class QCommandLineParser;

// One command that runs without a display, "vantorel NAME [options]". The base gives every
// command the same help, version, usage errors and output; a command names itself, adds its own
// options and does its work. A new command is a subclass and one line in CommandLine.
class Command {
public:
    // The exit codes of every command and of the program: 0 success, 1 the work failed, 2 a
    // usage error.
    enum ExitCode { Success = 0, Failure = 1, UsageError = 2 };

    virtual ~Command() = default;

    // The word that names the command on the command line ("fetch").
    virtual QString name() const = 0;
    // What it does, in the few words that the program's own help gives it.
    virtual QString summary() const = 0;

    // Runs the command with the arguments after its word; a QCoreApplication must exist.
    int run(const QStringList &arguments);

    static QString versionText();
    // Writes the text in UTF-8 and flushes at once, so that standard output and standard error
    // keep their order when both go to one place.
    static void print(FILE *stream, const QString &text);

protected:
    // The paragraph of its help text that says what the command does.
    virtual QString description() const = 0;
    // Whether it accepts the options that it shares with the window (--definitions, --data-dir,
    // --timeout); they are listed after its own.
    virtual bool takesSharedOptions() const { return false; }
    // Adds the command's own options and arguments; help and version are already there.
    virtual void addOptions(QCommandLineParser &parser) = 0;
    // The work, once the arguments are parsed and help, version and the shared options are
    // dealt with.
    virtual int execute(const QCommandLineParser &parser, const SharedOptions &options) = 0;

    // "vantorel NAME: MESSAGE" and where the help is, on standard error; gives UsageError.
    int usageError(const QString &message) const;
    // "vantorel NAME: MESSAGE" on standard error; gives Failure.
    int failure(const QString &message) const;

private:
    // The parser's help text, with the usage line as the user types it ("vantorel NAME ...").
    QString helpText(const QCommandLineParser &parser) const;
};
