#pragma once

#include <QObject>
#include <QString>

class DomainGroup;
class FlatGroup;
class LogSink;
class NodeGroup;
class QTimer;

// The part of the application that needs no display: the data folder, the five data groups, the
// global commands over all of them, the five-second update timer and the online state. The window
// controller drives it; the headless tools drive the very same object.
class AppCore : public QObject {
    Q_OBJECT

public:
    explicit AppCore(QObject *parent = nullptr);
    ~AppCore() override;

    static constexpr const char *kDataFolderName = "Vantorel Data";

    // The per-user application-data folder joined with the folder name.
    static QString pathFromApplicationSupportFolder(const QString &folderName);
    // Whether anything at all exists at the path; a plain file counts.
    static bool folderExists(const QString &path);
    // Creates the named folder (not its parents) unless something exists there already. The
    // per-user base folder itself is made first, since a new account may not have one yet.
    static bool checkCreateFolder(const QString &folderName);

    // Computes and creates the data folder ("Can't create Data Folder!" on the console when that
    // fails; the path is used all the same). A folder set with setDataFolderOverride() wins.
    QString prepareDataFolder();
    void setDataFolderOverride(const QString &path) { _dataFolderOverride = path; }
    QString dataFolderPath() const { return _dataFolderPath; }

    DomainGroup *sunGroup() const { return _sun; }
    DomainGroup *graphGroup() const { return _graphs; }
    DomainGroup *auroraGroup() const { return _aurora; }
    DomainGroup *earthGroup() const { return _earth; }
    FlatGroup *alertsGroup() const { return _alerts; }
    // Sun, Graphs, Aurora, Earth, Alerts: the order of "update all".
    QList<NodeGroup *> groupsInViewOrder() const;
    // Sun, Aurora, Graphs, Earth, Alerts: the order of every other global command.
    QList<NodeGroup *> groupsInCommandOrder() const;
    NodeGroup *groupNamed(const QString &name) const;

    // Reads the five definition files into the groups, for a caller without views.
    void loadAllGroups();
    // Removes what a write cut short by a crash or a kill may have left in the data folder: the
    // temporary twin of a node's data file ("name.XXXXXX"), once it is old enough that no
    // running write can still own it. Returns how many were removed.
    int removeStaleTemporaryFiles(int minimumAgeSeconds = 60);
    void setLog(LogSink *log);

    // Global commands.
    void runStartupDownloads();
    void runAllScheduledUpdates();
    void updateAllNodes();
    void cancelAllDownloads();
    // Empties every group's cache; the caller has asked the user first.
    void emptyGroupCaches();

    void startScheduler();
    void stopScheduler();
    bool schedulerRunning() const { return _scheduler != nullptr; }
    QTimer *scheduler() const { return _scheduler; }
    void schedulerFired();

    bool isOnline() const;
    void goOnline();
    void goOffline();
    void toggleOnlineStatus();

    // Lets every node of every group store its state, for an orderly end without views.
    void cleanupGroups();

    static constexpr int kSchedulerIntervalMs = 5000;

signals:
    void onlineStateChanged(bool online);

private:
    void setOnline(bool online);

    QString _dataFolderOverride;
    QString _dataFolderPath;
    DomainGroup *_sun;
    DomainGroup *_graphs;
    DomainGroup *_aurora;
    DomainGroup *_earth;
    FlatGroup *_alerts;
    QTimer *_scheduler = nullptr;
};
