#include "cli/Command.h"

#include "BuildInfo.h"

#include <QCommandLineParser>
#include <QCoreApplication>

int Command::run(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    addOptions(parser);
    if (takesSharedOptions())
        SharedOptions::addTo(parser);

    if (!parser.parse(QStringList{QStringLiteral("vantorel ") + name()} + arguments))
        return usageError(parser.errorText());
    if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all"))) {
        print(stdout, helpText(parser));
        return Success;
    }
    if (parser.isSet(version)) {
        print(stdout, versionText());
        return Success;
    }
    SharedOptions options;
    if (takesSharedOptions()) {
        QString error;
        const std::optional<SharedOptions> given = SharedOptions::read(parser, &error);
        if (!given)
            return usageError(error);
        options = *given;
    }
    return execute(parser, options);
}

QString Command::versionText()
{
    return QStringLiteral("vantorel %1\n").arg(QLatin1String(BuildInfo::version));
}

void Command::print(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

int Command::usageError(const QString &message) const
{
    print(stderr,
          QStringLiteral("vantorel %1: %2\nTry \"vantorel %1 --help\".\n").arg(name(), message));
    return UsageError;
}

int Command::failure(const QString &message) const
{
    print(stderr, QStringLiteral("vantorel %1: %2\n").arg(name(), message));
    return Failure;
}

QString Command::helpText(const QCommandLineParser &parser) const
{
    // The parser names the executable by the path it was started with.
    QString text = parser.helpText();
    const QString usage = QStringLiteral("Usage: ") + QCoreApplication::arguments().value(0);
    if (text.startsWith(usage))
        text.replace(0, usage.size(), QStringLiteral("Usage: vantorel ") + name());
    return text;
}
