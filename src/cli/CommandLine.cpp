#include "cli/CommandLine.h"

#include "BuildInfo.h"
#include "cli/FetchCommand.h"
#include "cli/MoonCommand.h"
#include "cli/NowCommand.h"
#include "cli/ReportCommand.h"
#include "core/util/ResourceLocator.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cmath>
#include <cstdio>

namespace {

void printText(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

bool isHelpOrVersion(const QString &argument)
{
    static const QStringList flags = {QStringLiteral("-h"),         QStringLiteral("--help"),
                                      QStringLiteral("--help-all"), QStringLiteral("-?"),
                                      QStringLiteral("-v"),         QStringLiteral("--version")};
    return flags.contains(argument);
}

} // namespace

QStringList CommandLine::commandNames()
{
    return {QStringLiteral("fetch"), QStringLiteral("report"), QStringLiteral("moon"),
            QStringLiteral("now")};
}

bool CommandLine::printCommandHelp(const QCommandLineParser &parser, const QString &command)
{
    if (!parser.isSet(QStringLiteral("help")) && !parser.isSet(QStringLiteral("help-all")))
        return false;
    // The parser names the executable by the path it was started with.
    QString text = parser.helpText();
    const QString usage = QStringLiteral("Usage: ") + QCoreApplication::arguments().value(0);
    if (text.startsWith(usage))
        text.replace(0, usage.size(), QStringLiteral("Usage: vantorel ") + command);
    printText(stdout, text);
    return true;
}

QString CommandLine::applicationDescription()
{
    return QStringLiteral(
        "Vantorel shows the Sun, the geomagnetic field and the Moon on your desktop.\n"
        "Without a command it opens its window.");
}

QString CommandLine::versionText()
{
    return QStringLiteral("vantorel %1\n").arg(QLatin1String(BuildInfo::version));
}

bool CommandLine::isHeadless(const QStringList &arguments)
{
    // A first argument that is not an option names a command; an unknown one is a usage error,
    // which needs no display either.
    if (arguments.size() > 1 && !arguments.at(1).startsWith(QLatin1Char('-')))
        return true;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) == QLatin1String("--"))
            break;
        if (isHelpOrVersion(arguments.at(i)))
            return true;
    }
    return false;
}

void CommandLine::addSharedOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("definitions"),
                      QStringLiteral("Read group definition files from <dir> first."),
                      QStringLiteral("dir")});
    parser.addOption({QStringLiteral("data-dir"),
                      QStringLiteral("Keep downloaded data in <dir> instead of the data folder."),
                      QStringLiteral("dir")});
    parser.addOption({QStringLiteral("timeout"),
                      QStringLiteral("Give up a transfer after <seconds> without progress "
                                     "(this run only; 0 or less means the default, 60)."),
                      QStringLiteral("seconds")});
}

std::optional<CommandLine::SharedOptions>
CommandLine::readSharedOptions(const QCommandLineParser &parser, QString *error)
{
    SharedOptions options;
    if (parser.isSet(QStringLiteral("definitions"))) {
        options.definitionsFolder = parser.value(QStringLiteral("definitions"));
        if (!QFileInfo(options.definitionsFolder).isDir()) {
            *error = QStringLiteral("--definitions: \"%1\" is not a folder")
                         .arg(options.definitionsFolder);
            return std::nullopt;
        }
        options.definitionsFolder = QDir(options.definitionsFolder).absolutePath();
    }
    if (parser.isSet(QStringLiteral("data-dir"))) {
        options.dataFolder = parser.value(QStringLiteral("data-dir"));
        if (options.dataFolder.isEmpty()) {
            *error = QStringLiteral("--data-dir: the folder name is empty");
            return std::nullopt;
        }
    }
    if (parser.isSet(QStringLiteral("timeout"))) {
        bool ok = false;
        const float seconds = parser.value(QStringLiteral("timeout")).toFloat(&ok);
        if (!ok || !std::isfinite(seconds)) {
            *error = QStringLiteral("--timeout: \"%1\" is not a number of seconds")
                         .arg(parser.value(QStringLiteral("timeout")));
            return std::nullopt;
        }
        options.timeoutSeconds = seconds;
    }
    return options;
}

void CommandLine::applyDefinitionsFolder(const SharedOptions &options)
{
    ResourceLocator::setDefinitionsFolder(options.definitionsFolder);
}

int CommandLine::runHeadless(const QStringList &arguments)
{
    const QString command = arguments.value(1);
    if (command.isEmpty() || command.startsWith(QLatin1Char('-')))
        return printHelp(arguments);
    const QStringList rest = arguments.mid(2);
    if (command == QLatin1String("fetch"))
        return FetchCommand::run(rest);
    if (command == QLatin1String("report"))
        return ReportCommand::run(rest);
    if (command == QLatin1String("moon"))
        return MoonCommand::run(rest);
    if (command == QLatin1String("now"))
        return NowCommand::run(rest);
    printText(stderr, QStringLiteral("vantorel: unknown command \"%1\"\n").arg(command));
    return UsageError;
}

int CommandLine::printHelp(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(applicationDescription());
    parser.addPositionalArgument(
        QStringLiteral("command"),
        QStringLiteral("fetch: download groups once and exit; report: print a bulletin; moon: "
                       "describe the Moon; now: the space weather now. \"vantorel COMMAND "
                       "--help\" tells more."),
        QStringLiteral("[command]"));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    addSharedOptions(parser);
    if (!parser.parse(arguments)) {
        printText(stderr, QStringLiteral("vantorel: %1\n").arg(parser.errorText()));
        return UsageError;
    }
    if (parser.isSet(version)) {
        printText(stdout, versionText());
        return Success;
    }
    printText(stdout, parser.helpText());
    return Success;
}
