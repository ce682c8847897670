#include "cli/WatchCommand.h"

#include "core/log/ConsoleLogSink.h"
#include "core/settings/NotificationSettings.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/shell/AppCore.h"
#include "core/sources/FlatGroup.h"
#include "core/util/ResourceLocator.h"
#include "core/util/SignalQuitter.h"
#include "core/watch/WatchService.h"
#include "notify/DesktopNotifier.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QSettings>
#include <QTimer>

QString WatchCommand::description() const
{
    return QStringLiteral(
        "Tells you when the space weather matters: a geomagnetic storm, a strong flare, a new "
        "forecasters' message, an aurora at your location, as the Notifications preferences "
        "set them. Keeps the Now group (DataNow.plist) downloading on its schedules and shows "
        "each event as a desktop notification until it is stopped (SIGTERM or SIGINT); each "
        "event is also printed on a line of its own.\n"
        "With --once, applies the rules once to the data on disk, prints the new events and "
        "exits; a second run on the same data prints nothing.\n"
        "Exit code: 0; 1 when the Now group's definitions cannot be read; 2 for a usage "
        "error.");
}

void WatchCommand::addOptions(QCommandLineParser &parser)
{
    parser.addOptions(
        {{QStringLiteral("once"),
          QStringLiteral("Apply the rules once to the data on disk, print the new events and "
                         "exit.")},
         {QStringLiteral("json"),
          QStringLiteral("Print each event as one JSON object on a line: rule, time, title, "
                         "detail.")},
         {QStringLiteral("data-dir"),
          QStringLiteral("Read the data from <dir> instead of the data folder."),
          QStringLiteral("dir")},
         {QStringLiteral("definitions"),
          QStringLiteral("Read group definition files from <dir> first."), QStringLiteral("dir")}});
}

void WatchCommand::printEvents(const QList<WatchEvent> &events) const
{
    for (const WatchEvent &event : events) {
        print(stdout, (_json ? QString::fromUtf8(
                                   QJsonDocument(event.toJson()).toJson(QJsonDocument::Compact))
                             : event.line()) +
                          QLatin1Char('\n'));
    }
}

int WatchCommand::execute(const QCommandLineParser &parser, const SharedOptions &)
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
    _json = parser.isSet(QStringLiteral("json"));
    const bool once = parser.isSet(QStringLiteral("once"));

    if (parser.isSet(definitions))
        ResourceLocator::setDefinitionsFolder(QDir(parser.value(definitions)).absolutePath());
    Preferences::shared().loadPreferences(Settings::store());
    // The data folder, as the window would use it; a single run only reads it.
    const QString folder =
        parser.isSet(dataDir)
            ? QDir(parser.value(dataDir)).absolutePath()
            : AppCore::pathFromApplicationSupportFolder(QLatin1String(AppCore::kDataFolderName));
    AppCore core;
    if (!once) {
        core.setDataFolderOverride(folder);
        core.prepareDataFolder();
    }
    FlatGroup group(QStringLiteral("Now"), -1);
    if (!group.loadDictionaryData(QStringLiteral("DataNow.plist"), folder))
        return failure(QStringLiteral("the Now group (DataNow.plist) cannot be read"));

    // A single run prints the events and nothing else on standard output; the long run prints
    // the log (downloads, and events as they are raised) on standard error.
    ConsoleLogSink log(once ? nullptr : stderr, stderr);
    group.setLog(&log);
    WatchService service(Settings::store(), &log, [] {
        NotificationSettings settings;
        settings.load(Settings::store());
        return settings;
    });
    service.watchGroup(&group);
    if (once) {
        printEvents(service.evaluateNow());
        Settings::sync();
        return Success;
    }

    DesktopNotifier notifier;
    notifier.setLog(&log);
    QObject::connect(&service, &WatchService::eventsReady, &notifier,
                     [this, &notifier](const QList<WatchEvent> &events) {
                         printEvents(events);
                         notifier.deliver(events);
                     });
    // Without a window to show, a click opens one.
    QObject::connect(&notifier, &DesktopNotifier::activated,
                     [] { QProcess::startDetached(QCoreApplication::applicationFilePath(), {}); });
    QTimer schedule;
    schedule.setInterval(AppCore::kSchedulerIntervalMs);
    QObject::connect(&schedule, &QTimer::timeout, &group, &NodeGroup::runScheduledUpdates);
    SignalQuitter quitter;
    QObject::connect(&quitter, &SignalQuitter::quitRequested, [] { QCoreApplication::quit(); });

    service.evaluateSoon();
    group.runStartupDownloads();
    schedule.start();
    QCoreApplication::exec();

    group.cancelAllDownloads();
    group.destroyAllNodes();
    Settings::sync();
    return Success;
}
