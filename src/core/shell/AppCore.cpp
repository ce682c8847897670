#include "core/shell/AppCore.h"

#include "core/log/LogSink.h"
#include "core/now/NowHistory.h"
#include "core/now/NowRecorder.h"
#include "core/settings/Preferences.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupCatalogue.h"
#include "core/sources/Node.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTimer>

AppCore::AppCore(QObject *parent) : QObject(parent)
{
    for (const GroupCatalogue::Group &group : GroupCatalogue::dataGroups()) {
        if (group.layout == GroupCatalogue::Layout::Domains)
            _groups.append(new DomainGroup(group.name, group.number, this));
        else
            _groups.append(new FlatGroup(group.name, group.number, this));
    }
}

AppCore::~AppCore()
{
    stopScheduler();
}

QString AppCore::pathFromApplicationSupportFolder(const QString &folderName)
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return QDir(base).filePath(folderName);
}

bool AppCore::folderExists(const QString &path)
{
    return QFileInfo::exists(path) || QFileInfo(path).isSymLink();
}

bool AppCore::checkCreateFolder(const QString &folderName)
{
    const QString path = pathFromApplicationSupportFolder(folderName);
    if (folderExists(path))
        return true;
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (!QDir().mkpath(base))
        return false;
    return QDir(base).mkdir(folderName);
}

QString AppCore::prepareDataFolder()
{
    if (!_dataFolderOverride.isEmpty()) {
        _dataFolderPath = QDir(_dataFolderOverride).absolutePath();
        if (!folderExists(_dataFolderPath) && !QDir().mkpath(_dataFolderPath))
            qWarning("Can't create Data Folder!");
        return _dataFolderPath;
    }
    const QString name = QLatin1String(kDataFolderName);
    _dataFolderPath = pathFromApplicationSupportFolder(name);
    if (!checkCreateFolder(name))
        qWarning("Can't create Data Folder!");
    return _dataFolderPath;
}

DomainGroup *AppCore::sunGroup() const
{
    return qobject_cast<DomainGroup *>(groupNumbered(GroupCatalogue::Sun));
}

DomainGroup *AppCore::graphGroup() const
{
    return qobject_cast<DomainGroup *>(groupNumbered(GroupCatalogue::Graphs));
}

DomainGroup *AppCore::auroraGroup() const
{
    return qobject_cast<DomainGroup *>(groupNumbered(GroupCatalogue::Aurora));
}

DomainGroup *AppCore::earthGroup() const
{
    return qobject_cast<DomainGroup *>(groupNumbered(GroupCatalogue::Earth));
}

FlatGroup *AppCore::alertsGroup() const
{
    return qobject_cast<FlatGroup *>(groupNumbered(GroupCatalogue::Alerts));
}

QList<NodeGroup *> AppCore::groupsInCommandOrder() const
{
    QList<NodeGroup *> result;
    for (const GroupCatalogue::Group &group : GroupCatalogue::dataGroupsInCommandOrder())
        result.append(groupNumbered(group.number));
    return result;
}

NodeGroup *AppCore::groupNamed(const QString &name) const
{
    for (NodeGroup *group : _groups) {
        if (group->groupName().compare(name, Qt::CaseInsensitive) == 0)
            return group;
    }
    return nullptr;
}

NodeGroup *AppCore::groupNumbered(int number) const
{
    for (NodeGroup *group : _groups) {
        if (group->groupNumber() == number)
            return group;
    }
    return nullptr;
}

bool AppCore::loadGroup(NodeGroup *group)
{
    const GroupCatalogue::Group *entry = GroupCatalogue::group(group->groupNumber());
    group->setDataFolderPath(_dataFolderPath);
    const bool loaded = entry && group->loadDefinitionFile(entry->definitionFile);
    if (loaded && group->groupNumber() == GroupCatalogue::Now) {
        connect(group, &NodeGroup::nodeDataLoaded, this, &AppCore::recordNowData,
                Qt::UniqueConnection);
        recordStoredNowData(group);
    }
    return loaded;
}

NowRecorder *AppCore::nowRecorder()
{
    if (!_nowRecorder) {
        // Never a history beside wherever the program happened to start.
        if (_dataFolderPath.isEmpty())
            prepareDataFolder();
        _nowRecorder = new NowRecorder(NowHistory::pathInFolder(_dataFolderPath), this);
        connect(_nowRecorder, &NowRecorder::problem, this, [this](const QString &message) {
            if (_log)
                _log->addErrorToLog(message);
        });
        connect(_nowRecorder, &NowRecorder::historyCleared, this, [this](bool ok) {
            if (!_log)
                return;
            if (ok)
                _log->addMessageToLog(QStringLiteral("The history was cleared."));
            else
                _log->addErrorToLog(QStringLiteral("The history could not be cleared."));
        });
    }
    return _nowRecorder;
}

void AppCore::clearHistory()
{
    nowRecorder()->clearHistory();
    // The data files on disk are still good: the charts start again from them, not from nothing.
    if (NodeGroup *now = groupNumbered(GroupCatalogue::Now))
        recordStoredNowData(now);
}

void AppCore::recordNowData(Node *node)
{
    if (!node->dataKind().isEmpty())
        nowRecorder()->record(node->dataKind(), node->filePath());
}

void AppCore::recordStoredNowData(NodeGroup *group)
{
    for (Node *node : group->allNodes()) {
        if (QFileInfo(node->filePath()).isFile())
            recordNowData(node);
    }
}

void AppCore::loadAllGroups()
{
    for (NodeGroup *group : _groups)
        loadGroup(group);
}

int AppCore::removeStaleTemporaryFiles(int minimumAgeSeconds)
{
    QSet<QString> names;
    for (NodeGroup *group : groupsInViewOrder()) {
        for (const Node *node : group->allNodes())
            names.insert(node->fileName());
    }
    if (names.isEmpty() || _dataFolderPath.isEmpty())
        return 0;

    // An atomic write goes through a temporary file named after its target with a dot and six
    // letters or digits; only such names, for our own nodes, are ever touched.
    static const QRegularExpression temporary(QStringLiteral("^(.+)\\.[A-Za-z0-9]{6}$"));
    const QDateTime cutoff = QDateTime::currentDateTime().addSecs(-minimumAgeSeconds);
    int removed = 0;
    const QFileInfoList entries =
        QDir(_dataFolderPath).entryInfoList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        const QRegularExpressionMatch match = temporary.match(entry.fileName());
        if (!match.hasMatch() || !names.contains(match.captured(1)))
            continue;
        if (entry.lastModified() > cutoff)
            continue;
        if (QFile::remove(entry.absoluteFilePath()))
            ++removed;
    }
    return removed;
}

void AppCore::setLog(LogSink *log)
{
    _log = log;
    for (NodeGroup *group : groupsInViewOrder())
        group->setLog(log);
}

void AppCore::runStartupDownloads()
{
    if (!isOnline())
        return;
    for (NodeGroup *group : groupsInCommandOrder())
        group->runStartupDownloads();
}

void AppCore::runAllScheduledUpdates()
{
    if (!isOnline())
        return;
    for (NodeGroup *group : groupsInCommandOrder())
        group->runScheduledUpdates();
}

void AppCore::updateAllNodes()
{
    for (NodeGroup *group : groupsInViewOrder())
        group->refreshAllNodeData();
}

void AppCore::cancelAllDownloads()
{
    for (NodeGroup *group : groupsInCommandOrder())
        group->cancelAllDownloads();
}

void AppCore::emptyGroupCaches()
{
    for (NodeGroup *group : groupsInCommandOrder())
        group->emptyGroupCache();
}

void AppCore::startScheduler()
{
    stopScheduler();
    _scheduler = new QTimer(this);
    _scheduler->setInterval(kSchedulerIntervalMs);
    connect(_scheduler, &QTimer::timeout, this, &AppCore::schedulerFired);
    _scheduler->start();
}

void AppCore::stopScheduler()
{
    if (!_scheduler)
        return;
    // The timer may be the one whose tick led here; let it finish before it goes.
    _scheduler->stop();
    _scheduler->disconnect(this);
    _scheduler->deleteLater();
    _scheduler = nullptr;
}

void AppCore::schedulerFired()
{
    runAllScheduledUpdates();
}

bool AppCore::isOnline() const
{
    return Preferences::shared().isOnline();
}

void AppCore::setOnline(bool online)
{
    const bool changed = online != isOnline();
    Preferences::shared().setOnline(online);
    if (changed)
        emit onlineStateChanged(online);
}

void AppCore::goOnline()
{
    setOnline(true);
    startScheduler();
}

void AppCore::goOffline()
{
    setOnline(false);
    cancelAllDownloads();
    stopScheduler();
}

void AppCore::toggleOnlineStatus()
{
    if (isOnline())
        goOffline();
    else
        goOnline();
}

void AppCore::cleanupGroups()
{
    for (NodeGroup *group : _groups)
        group->destroyAllNodes();
}
