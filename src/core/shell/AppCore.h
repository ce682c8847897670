#pragma once

#include <QObject>
#include <QString>

class DomainGroup;
class FlatGroup;
class LogSink;
class Node;
class NodeGroup;
class NowRecorder;
class QTimer;

// The part of the application that needs no display: the data folder, the data groups, the
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

    DomainGroup *sunGroup() const;
    DomainGroup *graphGroup() const;
    DomainGroup *auroraGroup() const;
    DomainGroup *earthGroup() const;
    FlatGroup *alertsGroup() const;
    // One group for each data group of the catalogue, named and numbered as it says. In view
    // order: the order of "update all".
    QList<NodeGroup *> groupsInViewOrder() const { return _groups; }
    // The order of every other global command (see GroupCatalogue).
    QList<NodeGroup *> groupsInCommandOrder() const;
    // Ignoring case; none for an unknown name.
    NodeGroup *groupNamed(const QString &name) const;
    // None for a number without a data group.
    NodeGroup *groupNumbered(int number) const;

    // Reads the group's definition file, as the catalogue names it, for the data folder.
    bool loadGroup(NodeGroup *group);
    // Reads every group's definition file, for a caller without views.
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
    // Empties every group's cache; the caller has asked the user first. The history stays.
    void emptyGroupCaches();

    // The history of the Now group's data ("History.sqlite" in the data folder), made when first
    // asked for. Every checked download of the group is merged into it on the recorder's own
    // thread; ending the application waits for a merge under way.
    NowRecorder *nowRecorder();
    // Forgets the whole history, then merges the Now data files on disk again; the caller has
    // asked the user first. The file stays. The outcome goes to the log.
    void clearHistory();

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
    void recordNowData(Node *node);
    // Merges the group's stored data files again, for what a merge cut short by a kill, or a
    // download made while the history could not be written, left out. Cheap when nothing is new:
    // rows that did not change are not written again.
    void recordStoredNowData(NodeGroup *group);

    QString _dataFolderOverride;
    QString _dataFolderPath;
    QList<NodeGroup *> _groups;
    QTimer *_scheduler = nullptr;
    LogSink *_log = nullptr;
    NowRecorder *_nowRecorder = nullptr;
};
