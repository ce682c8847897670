#include "cli/ReportCommand.h"

#include "core/bulletins/BulletinFile.h"
#include "core/shell/AppCore.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupCatalogue.h"
#include "core/sources/Node.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace {

// Text on a terminal ends with a line break, so that the prompt comes back on a line of its own.
void printText(FILE *stream, const QString &text)
{
    Command::print(stream, text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n'));
}

// The data folder, as the window would use it; it is only read, so it is not created.
QString dataFolder(const SharedOptions &options)
{
    if (!options.dataFolder.isEmpty())
        return QDir(options.dataFolder).absolutePath();
    return AppCore::pathFromApplicationSupportFolder(QLatin1String(AppCore::kDataFolderName));
}

} // namespace

QString ReportCommand::description() const
{
    return QStringLiteral(
        "Prints a bulletin exactly as the Alerts view shows it.\n"
        "NAME is a file, reformatted by its own file name, or a report of the Alerts group, "
        "named by its data file name or its title (case does not matter), whose stored copy is "
        "printed.\n"
        "Exit code: 0 when a bulletin was printed, 1 when there is none to print, 2 for a usage "
        "error.");
}

void ReportCommand::addOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("list"),
                      QStringLiteral("List the reports of the Alerts group: title, data file, last "
                                     "update and the time of the data (UTC).")});
    parser.addOption({QStringLiteral("as"),
                      QStringLiteral("Reformat as a data file named <filename> would "
                                     "be (RSGA.txt, WKHF.txt or any other name)."),
                      QStringLiteral("filename")});
    parser.addPositionalArgument(QStringLiteral("name"),
                                 QStringLiteral("A bulletin file, or a report's data file name "
                                                "or title."),
                                 QStringLiteral("NAME"));
}

int ReportCommand::execute(const QCommandLineParser &parser, const SharedOptions &options)
{
    const bool list = parser.isSet(QStringLiteral("list"));
    const bool as = parser.isSet(QStringLiteral("as"));
    const QStringList names = parser.positionalArguments();
    if (list) {
        if (!names.isEmpty())
            return usageError(QStringLiteral("--list takes no NAME"));
        if (as)
            return usageError(QStringLiteral("--as applies to a bulletin, not to --list"));
    } else if (names.isEmpty()) {
        return usageError(QStringLiteral("name a bulletin file or report, or use --list"));
    } else if (names.size() > 1) {
        return usageError(QStringLiteral("one bulletin at a time, not %1").arg(names.size()));
    }
    const QString asName = parser.value(QStringLiteral("as"));
    if (as && asName.isEmpty())
        return usageError(QStringLiteral("--as: the file name is empty"));

    // A file that exists wins over a report of the same name.
    if (!list) {
        const QFileInfo file(names.first());
        if (file.exists() && !file.isDir())
            return printFile(file.filePath(), asName.isEmpty() ? file.fileName() : asName);
    }

    options.applyDefinitionsFolder();
    FlatGroup group;
    const QString definitionFile = GroupCatalogue::group(group.groupNumber())->definitionFile;
    const bool loaded = group.loadDictionaryData(definitionFile, dataFolder(options));
    if (list) {
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
        return Failure;
    }
    printText(stdout, *report);
    return Success;
}

int ReportCommand::listReports(const FlatGroup &group)
{
    if (group.nodeCount() == 0)
        return failure(QStringLiteral("the Alerts group lists no reports"));

    // The data time comes last, so that the columns before it stay where they always were; it is
    // one word (ISO 8601 in UTC, or "-" without data), for scripts that take the last field.
    struct Row {
        QString title, file, updated, dataTime;
    };
    QList<Row> rows{{QStringLiteral("Title"), QStringLiteral("Data file"),
                     QStringLiteral("Last updated"), QStringLiteral("Data time")}};
    for (const Node *node : group.nodes()) {
        const QDateTime dataTime = node->dataTime();
        rows.append(
            {node->nodeTitle(), node->fileName(), node->lastUpdate(),
             dataTime.isValid() ? dataTime.toUTC().toString(Qt::ISODate) : QStringLiteral("-")});
    }
    qsizetype titleWidth = 0;
    qsizetype fileWidth = 0;
    qsizetype updatedWidth = 0;
    for (const Row &row : std::as_const(rows)) {
        titleWidth = std::max(titleWidth, row.title.size());
        fileWidth = std::max(fileWidth, row.file.size());
        updatedWidth = std::max(updatedWidth, row.updated.size());
    }
    QString table;
    for (const Row &row : std::as_const(rows)) {
        table += row.title.leftJustified(titleWidth + 2) + row.file.leftJustified(fileWidth + 2) +
                 row.updated.leftJustified(updatedWidth + 2) + row.dataTime + QLatin1Char('\n');
    }
    print(stdout, table);
    return Success;
}

int ReportCommand::printFile(const QString &path, const QString &dataFileName)
{
    const std::optional<QString> text = BulletinFile::read(path);
    if (!text)
        return failure(QStringLiteral("cannot read \"%1\"").arg(path));
    const std::optional<QString> report = BulletinFile::reportText(path, dataFileName);
    if (!report)
        return failure(QStringLiteral("\"%1\" holds no text").arg(path));
    printText(stdout, *report);
    return Success;
}
