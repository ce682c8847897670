#include "cli/FetchCommand.h"

#include "core/log/ConsoleLogSink.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/shell/AppCore.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/SignalQuitter.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>

namespace {

const QStringList &groupNames()
{
    static const QStringList names = {QStringLiteral("Sun"), QStringLiteral("Graphs"),
                                      QStringLiteral("Aurora"), QStringLiteral("Earth"),
                                      QStringLiteral("Alerts")};
    return names;
}

void loadGroup(AppCore &core, const QString &name)
{
    const QString folder = core.dataFolderPath();
    if (name == QLatin1String("Alerts")) {
        core.alertsGroup()->loadDictionaryData(QStringLiteral("DataAlerts.plist"), folder);
        return;
    }
    const int number = int(groupNames().indexOf(name));
    auto *group = static_cast<DomainGroup *>(core.groupsInViewOrder().at(number));
    group->loadDomainDataForGroup(name, number, QStringLiteral("Data%1.plist").arg(name), folder);
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
                          "Groups: Sun, Graphs, Aurora, Earth, Alerts (all when none is named).");
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
        loadGroup(core, name);
        groups.append(core.groupNamed(name));
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
