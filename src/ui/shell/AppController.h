#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class AboutBox;
class ActivityLog;
class AlertsView;
class AppCore;
class DesktopNotifier;
class GroupView;
class MainWindow;
class MainToolbar;
class MainViews;
class MoonView;
class Node;
class NodeGroup;
class NodeScheduler;
class PreferencesPanel;
class QAction;
class QMessageBox;
class QUrl;
class QWidget;
class WatchService;

// The application's single controller: it builds the main window with its seven views, the
// preferences panel, the About box and the activity log; runs the start-up and shutdown
// sequences; and answers the global settings that every view and node reads.
//
// The main window owns the menus and the views' places (MainWindow, MainViews); the controller
// connects to them and decides what every command does and when it may act.
//
// Start-up shows the window as soon as the view to be shown (and the Alerts view, which sets the
// window's least width) exists and has read its group. Once the first frame is on screen, one step
// per turn of the event loop: the window's icon and the icon theme's pictures, the dialogs, each
// other view with its group, then the stale-file sweep, the start-up downloads and the update
// timer. Whoever needs a view, a dialog or the groups sooner (a menu command, a caller of core())
// gets them at once, and every global command first finishes those steps.
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
    // Does at once whatever start-up has left for after the first frame.
    void finishLaunching();
    bool launchFinished() const { return _launchFinished; }

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
    // View > Show Times in UTC and View > Appearance: they take effect at once, in every view,
    // and are remembered.
    void setShowTimesInUTC(bool on);
    void setAppearance(int appearance);

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
    // Both ask the user first (the alert's default button goes ahead, the other cancels). Emptying
    // the cache leaves the history of the Now data alone; clearing the history leaves the data
    // files alone.
    void emptyCache();
    void clearHistory();
    // A window-modal question whose default button, named `accept`, goes ahead.
    static std::unique_ptr<QMessageBox> makeConfirmation(QWidget *parent, const QString &title,
                                                         const QString &text,
                                                         const QString &informativeText,
                                                         const QString &accept);
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

    // The core, with every group loaded (start-up is finished first if it has not yet).
    AppCore *core();
    MainWindow *window() const { return _window; }
    // The views, built (and loaded, once start-up has reached that far) if they are not yet.
    GroupView *sunView();
    GroupView *graphView();
    GroupView *auroraView();
    GroupView *earthView();
    AlertsView *alertsView();
    MoonView *moonView();
    QList<QWidget *> views();
    ActivityLog *log() const { return _log; }
    // The dialogs, built after the first frame or when first needed.
    PreferencesPanel *preferencesPanel();
    AboutBox *aboutBox();
    NodeScheduler *nodeScheduler();
    MainToolbar *mainToolbar() const { return _toolbar; }
    // Menu items by their tag (766 zoom, 767 save a copy, 0 to 6 the views).
    QAction *menuItem(int tag) const;
    // The Node menu's items without a tag.
    QAction *reloadItem() const;
    QAction *cancelDownloadItem() const;
    QAction *revealItem() const;
    QAction *scheduleItem() const;
    // Enables a menu item when it can act on the view shown: reload and schedule need a selected
    // node, cancel a queued one; reveal needs its data file, and 766 and 767 need it in an image
    // view. Going online, going offline and updating all follow their toolbar items.
    bool validateMenuItem(QAction *item) const;
    void validateMenus();

private:
    static constexpr int kAlertsViewNumber = 4;

    explicit AppController(QObject *parent);
    void buildInterface();
    void connectMenus();
    void ensureDialogs();
    void connectPreferencesPanel();
    // Shows the time-out preference in the panel's field, whole seconds.
    void showTimeoutValue();
    void onlineStateChanged();
    // The View menu's check marks from the preferences.
    void showDisplayChoices();
    void revealSelectedNodeData();
    void openScheduleWindowForSelectedNode();
    void refreshSelectedNodeData();
    void cancelSelectedNodeDownload();
    // The node selected in the data view shown, and that view's group; none on the Moon view.
    Node *shownSelectedNode() const;
    NodeGroup *shownGroup() const;
    // The view for a view number (any unknown number is the Sun's), built if it is not yet.
    QWidget *viewForNumber(int viewNumber);
    // The Alerts view if it is the one shown, else none.
    AlertsView *shownAlertsView() const;
    // One step of what start-up leaves for after the first frame; it schedules the next.
    void continueLaunching();
    // The window's own picture and the icon theme's pictures in the toolbar.
    void showOwnIcons();
    void openAboutLink(const QUrl &address);
    // Runs the watcher after each download of the group named "Now" that changes its data, and
    // shows its events as desktop notifications; nothing without such a group.
    void startWatching();
    // A notification was clicked: the window comes forward with the Now view.
    void showNowView();

    AppCore *_core = nullptr;
    MainWindow *_window = nullptr;
    MainToolbar *_toolbar = nullptr;

    // The seven views (_sunView to the Now view), built as they are needed.
    MainViews *_views = nullptr;
    QString _defaultDescription;
    GroupView *_selectedGroupView = nullptr;
    PreferencesPanel *_preferencesPanel = nullptr;
    AboutBox *_aboutBoxWindow = nullptr;
    NodeScheduler *_nodeScheduler = nullptr;
    int _lastView = -1;
    ActivityLog *_log = nullptr;
    WatchService *_watch = nullptr;
    DesktopNotifier *_notifier = nullptr;
    // How far start-up has come: the data folder and the preferences are there (awake), the
    // window has been shown (launched), and what was left for after the first frame is done.
    bool _awake = false;
    bool _launched = false;
    bool _launchFinished = false;
    // The next step of continueLaunching().
    int _launchStep = 0;
    bool _terminated = false;
};
