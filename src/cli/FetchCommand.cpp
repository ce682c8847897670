#include "cli/FetchCommand.h"

#include "core/log/ConsoleLogSink.h"
#include "core/net/AtomicFile.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/shell/AppCore.h"
#include "core/sources/GroupCatalogue.h"
#include "core/sources/Node.h"
#include "core/sources/NodeGroup.h"
#include "core/util/SignalQuitter.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>

namespace {

const QStringList &groupNames()
{
    static const QStringList names = GroupCatalogue::dataGroupNames();
    return names;
}

bool allQueuesEmpty(const QList<NodeGroup *> &groups)
{
    for (const NodeGroup *group : groups) {
        if (!group->downloadQueue().isEmpty())
            return false;
    }
    return true;
}

} // namespace

QString FetchCommand::description() const
{
    return QStringLiteral("Downloads every item of the named groups once and exits: 0 when all "
                          "succeeded, 1 when any failed, 2 for a usage error.\n"
                          "Groups: %1 (all when none is named).")
        .arg(groupNames().join(QStringLiteral(", ")));
}

void FetchCommand::addOptions(QCommandLineParser &parser)
{
    parser.addPositionalArgument(QStringLiteral("groups"), QStringLiteral("Groups to fetch."),
                                 QStringLiteral("[GROUP...]"));
}

int FetchCommand::execute(const QCommandLineParser &parser, const SharedOptions &options)
{
    QStringList wanted;
    for (const QString &argument : parser.positionalArguments()) {
        const auto match =
            std::find_if(groupNames().cbegin(), groupNames().cend(), [&](const QString &name) {
                return name.compare(argument, Qt::CaseInsensitive) == 0;
            });
        if (match == groupNames().cend())
            return usageError(QStringLiteral("unknown group \"%1\"").arg(argument));
        if (!wanted.contains(*match))
            wanted.append(*match);
    }
    if (wanted.isEmpty())
        wanted = groupNames();

    // Nothing waits for this thread: data files are written here, without a hop to another
    // thread for every piece.
    AtomicFile::setWriting(AtomicFile::Writing::InPlace);
    options.applyDefinitionsFolder();
    Preferences::shared().loadPreferences(Settings::store());
    if (options.timeoutSeconds)
        Preferences::shared().setTimeoutOverride(*options.timeoutSeconds);

    AppCore core;
    core.setDataFolderOverride(options.dataFolder);
    core.prepareDataFolder();
    ConsoleLogSink log;
    core.setLog(&log);

    QList<NodeGroup *> groups;
    for (const QString &name : groupNames()) {
        if (!wanted.contains(name))
            continue;
        NodeGroup *group = core.groupNamed(name);
        core.loadGroup(group);
        groups.append(group);
    }

    core.removeStaleTemporaryFiles();

    bool interrupted = false;
    SignalQuitter quitter;
    QObject::connect(&quitter, &SignalQuitter::quitRequested, [&] { interrupted = true; });
    const auto finishIfDone = [&groups] {
        if (allQueuesEmpty(groups))
            QCoreApplication::quit();
    };
    for (NodeGroup *group : groups) {
        QObject::connect(group, &NodeGroup::nodeDataLoaded, &core, finishIfDone);
        QObject::connect(group, &NodeGroup::nodeDownloadFailed, &core, finishIfDone);
    }

    // Every queue starts its head at once; five groups run side by side.
    for (NodeGroup *group : groups)
        group->refreshAllNodeData();
    if (!allQueuesEmpty(groups))
        QCoreApplication::exec();

    if (interrupted)
        core.cancelAllDownloads();
    core.cleanupGroups();
    Settings::sync();
    return (log.errorCount() > 0 || interrupted) ? Failure : Success;
}
