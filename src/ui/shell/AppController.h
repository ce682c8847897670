#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class AboutBox;
class ActivityLog;
class AlertsView;
class AppCore;
class GroupView;
class MainWindow;
class MainToolbar;
class MoonView;
class Node;
class NodeGroup;
class NodeScheduler;
class PreferencesPanel;
class QAction;
class QMessageBox;
class QUrl;
class QStackedWidget;
class QWidget;

// The application's single controller: it builds the main window with its six views, the
// preferences panel, the About box and the activity log; runs the start-up and shutdown
// sequences; and answers the global settings that every view and node reads.
class AppController : public QObject {
    Q_OBJECT

public:
    // The one controller, or none (with a console message) when one exists already.
    static AppController *create(QObject *parent = nullptr);
    // The existing controller, made on first use.
    static AppController *sharedInstance();
    ~AppController() override;

    // Start-up, once the interface exists.
    void awakeFromNib();
    void applicationDidFinishLaunching();
    void applicationWillTerminate();
    void windowShouldClose();

    // Options of the command line, applied before start-up.
    void setDataFolderOverride(const QString &path);

    // Settings read by everyone else.
    bool isOnline() const;
    bool logErrorsOnly() const;
    bool beepOnErrors() const;
    bool downloadMissingData() const;
    float timeoutSeconds() const;
    QString defaultDescription() const { return _defaultDescription; }

    void loadPreferences();
    void savePreferences();
    void openPreferencesPanel();
    void setLogErrorsOnly(bool on);
    void setBeepOnErrors(bool on);
    void setDownloadMissingData(bool on);
    void setSouthernHemisphere(bool on);
    void setTimeoutValue(int seconds);

    // Views and the toolbar.
    void initToolbar();
    void runToolbarConfig();
    void didSelectToolbarItem(const QString &identifier);
    bool validateToolbarItem(const QString &identifier) const;
    void setGroupView(int viewNumber);
    void setGroupViewFromMenu(QAction *item);
    void attachView(QWidget *view, bool display, bool animate);
    int lastView() const { return _lastView; }
    GroupView *selectedGroupView() const { return _selectedGroupView; }

    // Global commands.
    void runStartupDownloads();
    void updateAllNodes();
    void cancelAllDownloads();
    void startScheduler();
    void stopScheduler();
    void runAllScheduledUpdates();
    void goOnline();
    void goOffline();
    void toggleOnlineStatus();
    // Asks the user first (the alert's default button empties, the other cancels).
    void emptyCache();
    // The alert emptyCache() shows, for a caller that wants to present it.
    static std::unique_ptr<QMessageBox> makeEmptyCacheAlert(QWidget *parent);
    // Act on the image view shown, if any.
    void zoomSelectedNodeData();
    void saveSelectedNodeData();
    // Opens the address that a data-source link shows.
    void viewDataSourceLinkClicked(const QString &address);

    void openAboutBox();
    void openAuthorHomePageLink();
    void openMailtoLink();
    void openDonationLink();
    void openRelatedSiteOneLink();
    void openRelatedSiteTwoLink();

    QString windowTitle() const;
    QString dataFolderPath() const;

    AppCore *core() const { return _core; }
    MainWindow *window() const { return _window; }
    GroupView *sunView() const { return _sunView; }
    GroupView *graphView() const { return _graphView; }
    GroupView *auroraView() const { return _auroraView; }
    GroupView *earthView() const { return _earthView; }
    AlertsView *alertsView() const { return _alertsView; }
    MoonView *moonView() const { return _moonView; }
    ActivityLog *log() const { return _log; }
    PreferencesPanel *preferencesPanel() const { return _preferencesPanel; }
    AboutBox *aboutBox() const { return _aboutBoxWindow; }
    NodeScheduler *nodeScheduler() const { return _nodeScheduler; }
    MainToolbar *mainToolbar() const { return _toolbar; }
    // Menu items by their tag (766 zoom, 767 save a copy, 0 to 5 the views).
    QAction *menuItem(int tag) const;
    // The Node menu's items without a tag.
    QAction *reloadItem() const { return _reloadItem; }
    QAction *cancelDownloadItem() const { return _cancelDownloadItem; }
    QAction *revealItem() const { return _revealItem; }
    QAction *scheduleItem() const { return _scheduleItem; }
    // Enables a menu item when it can act on the view shown: reload and schedule need a selected
    // node, cancel a queued one; reveal needs its data file, and 766 and 767 need it in an image
    // view.
    bool validateMenuItem(QAction *item) const;
    void validateMenus();
    QList<QWidget *> views() const;

private:
    explicit AppController(QObject *parent);
    void buildInterface();
    void buildMenus();
    void connectPreferencesPanel();
    void onlineStateChanged();
    void revealSelectedNodeData();
    void openScheduleWindowForSelectedNode();
    void refreshSelectedNodeData();
    void cancelSelectedNodeDownload();
    // The node selected in the data view shown, and that view's group; none on the Moon view.
    Node *shownSelectedNode() const;
    NodeGroup *shownGroup() const;
    QWidget *viewForNumber(int viewNumber) const;
    void openAboutLink(const QUrl &address);

    AppCore *_core = nullptr;
    MainWindow *_window = nullptr;
    QStackedWidget *_content = nullptr;
    MainToolbar *_toolbar = nullptr;
    QList<QAction *> _menuItems;
    QAction *_goOnlineItem = nullptr;
    QAction *_goOfflineItem = nullptr;
    QAction *_updateAllItem = nullptr;
    QAction *_reloadItem = nullptr;
    QAction *_cancelDownloadItem = nullptr;
    QAction *_revealItem = nullptr;
    QAction *_scheduleItem = nullptr;

    GroupView *_sunView = nullptr;
    GroupView *_graphView = nullptr;
    GroupView *_auroraView = nullptr;
    GroupView *_earthView = nullptr;
    AlertsView *_alertsView = nullptr;
    MoonView *_moonView = nullptr;
    QString _defaultDescription;
    GroupView *_selectedGroupView = nullptr;
    PreferencesPanel *_preferencesPanel = nullptr;
    AboutBox *_aboutBoxWindow = nullptr;
    NodeScheduler *_nodeScheduler = nullptr;
    int _lastView = -1;
    ActivityLog *_log = nullptr;
    bool _terminated = false;
};
