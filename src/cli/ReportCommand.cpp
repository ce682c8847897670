#include "cli/ReportCommand.h"

#include "cli/CommandLine.h"
#include "core/bulletins/BulletinFile.h"
#include "core/shell/AppCore.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupCatalogue.h"
#include "core/sources/Node.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {

void print(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

// Text on a terminal ends with a line break, so that the prompt comes back on a line of its own.
void printText(FILE *stream, const QString &text)
{
    print(stream, text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n'));
}

int usageError(const QString &message)
{
    print(stderr,
          QStringLiteral("vantorel report: %1\nTry \"vantorel report --help\".\n").arg(message));
    return CommandLine::UsageError;
}

int failure(const QString &message)
{
    print(stderr, QStringLiteral("vantorel report: %1\n").arg(message));
    return CommandLine::Failure;
}

// The data folder, as the window would use it; it is only read, so it is not created.
QString dataFolder(const CommandLine::SharedOptions &options)
{
    if (!options.dataFolder.isEmpty())
        return QDir(options.dataFolder).absolutePath();
    return AppCore::pathFromApplicationSupportFolder(QLatin1String(AppCore::kDataFolderName));
}

int listReports(const FlatGroup &group)
{
    if (group.nodeCount() == 0)
        return failure(QStringLiteral("the Alerts group lists no reports"));

    struct Row {
        QString title, file, updated;
    };
    QList<Row> rows{
        {QStringLiteral("Title"), QStringLiteral("Data file"), QStringLiteral("Last updated")}};
    for (const Node *node : group.nodes())
        rows.append({node->nodeTitle(), node->fileName(), node->lastUpdate()});
    qsizetype titleWidth = 0;
    qsizetype fileWidth = 0;
    for (const Row &row : std::as_const(rows)) {
        titleWidth = std::max(titleWidth, row.title.size());
        fileWidth = std::max(fileWidth, row.file.size());
    }
    QString table;
    for (const Row &row : std::as_const(rows)) {
        table += row.title.leftJustified(titleWidth + 2) + row.file.leftJustified(fileWidth + 2) +
                 row.updated + QLatin1Char('\n');
    }
    print(stdout, table);
    return CommandLine::Success;
}

int printFile(const QString &path, const QString &dataFileName)
{
    const std::optional<QString> text = BulletinFile::read(path);
    if (!text)
        return failure(QStringLiteral("cannot read \"%1\"").arg(path));
    const std::optional<QString> report = BulletinFile::reportText(path, dataFileName);
    if (!report)
        return failure(QStringLiteral("\"%1\" holds no text").arg(path));
    printText(stdout, *report);
    return CommandLine::Success;
}

} // namespace

int ReportCommand::run(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Prints a bulletin exactly as the Alerts view shows it.\n"
        "NAME is a file, reformatted by its own file name, or a report of the Alerts group, "
        "named by its data file name or its title (case does not matter), whose stored copy is "
        "printed.\n"
        "Exit code: 0 when a bulletin was printed, 1 when there is none to print, 2 for a usage "
        "error."));
    parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption list(QStringLiteral("list"),
                                  QStringLiteral("List the reports of the Alerts group."));
    const QCommandLineOption as(QStringLiteral("as"),
                                QStringLiteral("Reformat as a data file named <filename> would "
                                               "be (RSGA.txt, WKHF.txt or any other name)."),
                                QStringLiteral("filename"));
    parser.addOption(list);
    parser.addOption(as);
    CommandLine::addSharedOptions(parser);
    parser.addPositionalArgument(QStringLiteral("name"),
                                 QStringLiteral("A bulletin file, or a report's data file name "
                                                "or title."),
                                 QStringLiteral("NAME"));

    if (!parser.parse(QStringList{QStringLiteral("vantorel report")} + arguments))
        return usageError(parser.errorText());
    if (CommandLine::printCommandHelp(parser, QStringLiteral("report")))
        return CommandLine::Success;
    if (parser.isSet(version)) {
        print(stdout, CommandLine::versionText());
        return CommandLine::Success;
    }
    QString error;
    const auto options = CommandLine::readSharedOptions(parser, &error);
    if (!options)
        return usageError(error);

    const QStringList names = parser.positionalArguments();
    if (parser.isSet(list)) {
        if (!names.isEmpty())
            return usageError(QStringLiteral("--list takes no NAME"));
        if (parser.isSet(as))
            return usageError(QStringLiteral("--as applies to a bulletin, not to --list"));
    } else if (names.isEmpty()) {
        return usageError(QStringLiteral("name a bulletin file or report, or use --list"));
    } else if (names.size() > 1) {
        return usageError(QStringLiteral("one bulletin at a time, not %1").arg(names.size()));
    }
    const QString asName = parser.value(as);
    if (parser.isSet(as) && asName.isEmpty())
        return usageError(QStringLiteral("--as: the file name is empty"));

    // A file that exists wins over a report of the same name.
    if (!parser.isSet(list)) {
        const QFileInfo file(names.first());
        if (file.exists() && !file.isDir())
            return printFile(file.filePath(), asName.isEmpty() ? file.fileName() : asName);
    }

    CommandLine::applyDefinitionsFolder(*options);
    FlatGroup group;
    const QString definitionFile = GroupCatalogue::group(group.groupNumber())->definitionFile;
    const bool loaded = group.loadDictionaryData(definitionFile, dataFolder(*options));
    if (parser.isSet(list)) {
        if (!loaded)
            return failure(
                QStringLiteral("the list of reports (%1) cannot be read").arg(definitionFile));
        return listReports(group);
    }

    const QString name = names.first();
    const Node *node = group.nodeNamed(name);
    if (!node) {
        return usageError(QStringLiteral("\"%1\" is neither a file nor a report of the Alerts "
                                         "group (\"vantorel report --list\" lists them)")
                              .arg(name));
    }
    // Without a readable stored copy, the report area's own text says why there is none.
    const std::optional<QString> report = FlatGroup::storedReportText(node, asName);
    if (!report) {
        printText(stderr, FlatGroup::notLoadedText());
        return CommandLine::Failure;
    }
    printText(stdout, *report);
    return CommandLine::Success;
}
