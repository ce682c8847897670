#include "cli/NowCommand.h"

#include "core/now/NowSummary.h"
#include "core/shell/AppCore.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/Clock.h"
#include "core/util/ResourceLocator.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <cstdio>

QString NowCommand::description() const
{
    return QStringLiteral(
        "Prints the space weather now from the data files of the Now group (DataNow.plist) on "
        "disk, without the network. Times are UTC.\n"
        "Exit code: 0 when every value is there and none is stale, 1 otherwise, 2 for a usage "
        "error.");
}

void NowCommand::addOptions(QCommandLineParser &parser)
{
    parser.addOptions(
        {{QStringLiteral("json"), QStringLiteral("Print everything as one JSON object.")},
         {QStringLiteral("data-dir"),
          QStringLiteral("Read the data from <dir> instead of the data folder."),
          QStringLiteral("dir")},
         {QStringLiteral("definitions"),
          QStringLiteral("Read group definition files from <dir> first."), QStringLiteral("dir")}});
}

int NowCommand::execute(const QCommandLineParser &parser, const SharedOptions &)
{
    const QString dataDir = QStringLiteral("data-dir");
    const QString definitions = QStringLiteral("definitions");
    if (!parser.positionalArguments().isEmpty()) {
        return usageError(
            QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().first()));
    }
    if (parser.isSet(definitions) && !QFileInfo(parser.value(definitions)).isDir())
        return usageError(
            QStringLiteral("--definitions: \"%1\" is not a folder").arg(parser.value(definitions)));
    if (parser.isSet(dataDir) && parser.value(dataDir).isEmpty())
        return usageError(QStringLiteral("--data-dir: the folder name is empty"));

    if (parser.isSet(definitions))
        ResourceLocator::setDefinitionsFolder(QDir(parser.value(definitions)).absolutePath());
    // The data folder, as the window would use it; it is only read, so it is not created.
    const QString folder =
        parser.isSet(dataDir)
            ? QDir(parser.value(dataDir)).absolutePath()
            : AppCore::pathFromApplicationSupportFolder(QLatin1String(AppCore::kDataFolderName));
    FlatGroup group;
    if (!group.loadDictionaryData(QStringLiteral("DataNow.plist"), folder))
        print(stderr,
              QStringLiteral("vantorel now: the Now group (DataNow.plist) cannot be read\n"));
    QList<std::pair<QString, QString>> files;
    for (const Node *node : group.nodes()) {
        if (!node->dataKind().isEmpty())
            files.append({node->dataKind(), node->filePath()});
    }

    QStringList problems;
    const NowSummary::Data data = NowSummary::readFiles(files, &problems);
    for (const QString &problem : std::as_const(problems))
        failure(problem);
    const QJsonObject summary = NowSummary::summarize(data, Clock::now().toSecsSinceEpoch());
    if (parser.isSet(QStringLiteral("json")))
        print(stdout, QString::fromUtf8(QJsonDocument(summary).toJson(QJsonDocument::Indented)));
    else
        print(stdout, NowSummary::plainText(summary));
    return NowSummary::allCurrent(summary) ? Success : Failure;
}
