#include "cli/CommandLine.h"

#include "cli/Command.h"
#include "cli/FetchCommand.h"
#include "cli/MoonCommand.h"
#include "cli/NowCommand.h"
#include "cli/ReportCommand.h"
#include "cli/WatchCommand.h"

#include <QCommandLineParser>

#include <memory>
#include <vector>

namespace {

// Every command, in the order the program's help names them. A new command is one line here.
std::vector<std::unique_ptr<Command>> allCommands()
{
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<FetchCommand>());
    commands.push_back(std::make_unique<ReportCommand>());
    commands.push_back(std::make_unique<MoonCommand>());
    commands.push_back(std::make_unique<NowCommand>());
    commands.push_back(std::make_unique<WatchCommand>());
    return commands;
}

bool isHelpOrVersion(const QString &argument)
{
    static const QStringList flags = {QStringLiteral("-h"), QStringLiteral("--help"),
                                      QStringLiteral("-?"), QStringLiteral("--help-all"),
                                      QStringLiteral("-v"), QStringLiteral("--version")};
    return flags.contains(argument);
}

int usageError(const QString &message)
{
    Command::print(stderr, QStringLiteral("vantorel: %1\n").arg(message));
    return Command::UsageError;
}

} // namespace

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

int CommandLine::runHeadless(const QStringList &arguments)
{
    const QString word = arguments.value(1);
    if (word.isEmpty() || word.startsWith(QLatin1Char('-')))
        return printHelp(arguments);
    for (const std::unique_ptr<Command> &command : allCommands()) {
        if (command->name() == word)
            return command->run(arguments.mid(2));
    }
    return usageError(QStringLiteral("unknown command \"%1\"").arg(word));
}

std::optional<SharedOptions> CommandLine::windowOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    SharedOptions::addTo(parser);
    if (!parser.parse(arguments)) {
        usageError(parser.errorText());
        return std::nullopt;
    }
    if (!parser.positionalArguments().isEmpty()) {
        usageError(QStringLiteral("unknown command \"%1\"")
                       .arg(parser.positionalArguments().constFirst()));
        return std::nullopt;
    }
    QString error;
    const std::optional<SharedOptions> options = SharedOptions::read(parser, &error);
    if (!options)
        usageError(error);
    return options;
}

int CommandLine::printHelp(const QStringList &arguments)
{
    QStringList commands;
    for (const std::unique_ptr<Command> &command : allCommands())
        commands.append(command->name() + QStringLiteral(": ") + command->summary());
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Vantorel shows the Sun, the geomagnetic field and the Moon on your desktop.\n"
        "Without a command it opens its window."));
    parser.addPositionalArgument(QStringLiteral("command"),
                                 commands.join(QStringLiteral("; ")) +
                                     QStringLiteral(". \"vantorel COMMAND --help\" tells more."),
                                 QStringLiteral("[command]"));
    parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    SharedOptions::addTo(parser);
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(version)) {
        Command::print(stdout, Command::versionText());
        return Command::Success;
    }
    Command::print(stdout, parser.helpText());
    return Command::Success;
}
