#include "ui/shell/AppController.h"

#include "BuildInfo.h"
#include "core/net/NetworkAccess.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/shell/AboutLinks.h"
#include "core/shell/AppCore.h"
#include "core/shell/ToolbarItems.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupCatalogue.h"
#include "core/sources/Node.h"
#include "core/util/DisplayTime.h"
#include "core/util/ResourceLocator.h"
#include "core/watch/WatchService.h"
#include "notify/DesktopNotifier.h"
#include "ui/alerts/AlertsView.h"
#include "ui/common/NamedImage.h"
#include "ui/common/TimeTicker.h"
#include "ui/common/WindowAppearance.h"
#include "ui/log/ActivityLog.h"
#include "ui/moon/MoonView.h"
#include "ui/now/NowView.h"
#include "ui/shell/AboutBox.h"
#include "ui/shell/MainToolbar.h"
#include "ui/shell/MainViews.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/PreferencesPanel.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/NodeScheduler.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDebug>
#include <QDesktopServices>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTimer>

#include <cmath>
#include <limits>

namespace {

AppController *g_sharedInstance = nullptr;

} // namespace

AppController *AppController::create(QObject *parent)
{
    if (g_sharedInstance) {
        qWarning("Attempt to allocate more than one AppController object!");
        return nullptr;
    }
    return new AppController(parent);
}

AppController *AppController::sharedInstance()
{
    if (!g_sharedInstance)
        create(qApp);
    return g_sharedInstance;
}

AppController::AppController(QObject *parent) : QObject(parent)
{
    g_sharedInstance = this;
    _lastView = -1;
    _core = new AppCore(this);
    buildInterface();
}

AppController::~AppController()
{
    _core->stopScheduler();
    _core->setLog(nullptr);
    delete _window;
    delete _log;
    if (g_sharedInstance == this)
        g_sharedInstance = nullptr;
}

// --- The interface ----------------------------------------------------------------------------

void AppController::buildInterface()
{
    _log = new ActivityLog;
    _core->setLog(_log);

    _window = new MainWindow;
    connect(_window, &MainWindow::closeRequested, this, &AppController::windowShouldClose);
    _views = new MainViews(_core, _log, _window->content(), this);
    connect(_views, &MainViews::selectionChanged, this, &AppController::validateMenus);
    connect(_views, &MainViews::dataSourceLinkClicked, this,
            &AppController::viewDataSourceLinkClicked);

    connectMenus();
    _log->awakeFromNib();

    connect(_core, &AppCore::onlineStateChanged, this, &AppController::onlineStateChanged);
}

void AppController::ensureDialogs()
{
    if (_preferencesPanel)
        return;
    _preferencesPanel = new PreferencesPanel(_window);
    connectPreferencesPanel();
    showTimeoutValue();

    _aboutBoxWindow = new AboutBox(_window);
    _aboutBoxWindow->versionNumberField()->setText(
        QStringLiteral("Version Number %1").arg(QLatin1String(BuildInfo::version)));
    connect(_aboutBoxWindow, &AboutBox::authorHomePageRequested, this,
            &AppController::openAuthorHomePageLink);
    connect(_aboutBoxWindow, &AboutBox::mailRequested, this, &AppController::openMailtoLink);
    connect(_aboutBoxWindow, &AboutBox::donationRequested, this, &AppController::openDonationLink);
    connect(_aboutBoxWindow, &AboutBox::relatedSiteOneRequested, this,
            &AppController::openRelatedSiteOneLink);
    connect(_aboutBoxWindow, &AboutBox::relatedSiteTwoRequested, this,
            &AppController::openRelatedSiteTwoLink);

    // One schedule sheet serves every data view.
    _nodeScheduler = new NodeScheduler(_window);
    _views->setNodeScheduler(_nodeScheduler);
}

PreferencesPanel *AppController::preferencesPanel()
{
    ensureDialogs();
    return _preferencesPanel;
}

AboutBox *AppController::aboutBox()
{
    ensureDialogs();
    return _aboutBoxWindow;
}

NodeScheduler *AppController::nodeScheduler()
{
    ensureDialogs();
    return _nodeScheduler;
}

GroupView *AppController::sunView()
{
    return static_cast<GroupView *>(_views->ensure(0));
}

GroupView *AppController::graphView()
{
    return static_cast<GroupView *>(_views->ensure(1));
}

GroupView *AppController::auroraView()
{
    return static_cast<GroupView *>(_views->ensure(2));
}

GroupView *AppController::earthView()
{
    return static_cast<GroupView *>(_views->ensure(3));
}

AlertsView *AppController::alertsView()
{
    return static_cast<AlertsView *>(_views->ensure(4));
}

MoonView *AppController::moonView()
{
    return static_cast<MoonView *>(_views->ensure(5));
}

QList<QWidget *> AppController::views()
{
    QList<QWidget *> all;
    for (int number = 0; number < MainViews::kCount; ++number)
        all.append(_views->ensure(number));
    return all;
}

AppCore *AppController::core()
{
    finishLaunching();
    return _core;
}

void AppController::connectMenus()
{
    using Command = MainWindow::Command;
    const struct {
        Command command;
        void (AppController::*action)();
    } commands[] = {
        {Command::Preferences, &AppController::openPreferencesPanel},
        {Command::CustomizeToolbar, &AppController::runToolbarConfig},
        {Command::UpdateAll, &AppController::updateAllNodes},
        {Command::CancelAllDownloads, &AppController::cancelAllDownloads},
        {Command::GoOnline, &AppController::goOnline},
        {Command::GoOffline, &AppController::goOffline},
        {Command::EmptyCache, &AppController::emptyCache},
        {Command::ClearHistory, &AppController::clearHistory},
        {Command::Reload, &AppController::refreshSelectedNodeData},
        {Command::CancelDownload, &AppController::cancelSelectedNodeDownload},
        {Command::Reveal, &AppController::revealSelectedNodeData},
        {Command::Schedule, &AppController::openScheduleWindowForSelectedNode},
        {Command::About, &AppController::openAboutBox},
    };
    for (const auto &entry : commands)
        connect(_window->item(entry.command), &QAction::triggered, this, entry.action);
    connect(_window->item(Command::Quit), &QAction::triggered, this,
            [] { QCoreApplication::quit(); });
    connect(_window->item(Command::ActivityLog), &QAction::triggered, this,
            [this] { _log->openLogWindow(); });
    connect(_window->item(Command::ClearLog), &QAction::triggered, this,
            [this] { _log->clearLog(); });
    connect(_window->item(Command::ShowTimesInUTC), &QAction::toggled, this,
            &AppController::setShowTimesInUTC);
    for (const auto &[command, appearance] :
         {std::pair{Command::AppearanceSystem, Preferences::Appearance::System},
          std::pair{Command::AppearanceLight, Preferences::Appearance::Light},
          std::pair{Command::AppearanceDark, Preferences::Appearance::Dark}}) {
        connect(_window->item(command), &QAction::triggered, this,
                [this, appearance] { setAppearance(int(appearance)); });
    }
    connect(menuItem(MainWindow::kSaveCopyTag), &QAction::triggered, this,
            &AppController::saveSelectedNodeData);
    connect(menuItem(MainWindow::kZoomImageTag), &QAction::triggered, this,
            &AppController::zoomSelectedNodeData);
    for (QAction *item : _window->viewItems())
        connect(item, &QAction::triggered, this, [this, item] { setGroupViewFromMenu(item); });
    connect(_window, &MainWindow::menuAboutToShow, this, &AppController::validateMenus);
}

QAction *AppController::menuItem(int tag) const
{
    return _window->menuItem(tag);
}

QAction *AppController::reloadItem() const
{
    return _window->item(MainWindow::Command::Reload);
}

QAction *AppController::cancelDownloadItem() const
{
    return _window->item(MainWindow::Command::CancelDownload);
}

QAction *AppController::revealItem() const
{
    return _window->item(MainWindow::Command::Reveal);
}

QAction *AppController::scheduleItem() const
{
    return _window->item(MainWindow::Command::Schedule);
}

AlertsView *AppController::shownAlertsView() const
{
    AlertsView *alerts = _views->alertsView();
    return alerts && _window->content()->currentWidget() == alerts ? alerts : nullptr;
}

Node *AppController::shownSelectedNode() const
{
    if (_selectedGroupView)
        return _selectedGroupView->selectedNode();
    if (AlertsView *alerts = shownAlertsView())
        return alerts->selectedNode();
    return nullptr;
}

NodeGroup *AppController::shownGroup() const
{
    if (_selectedGroupView)
        return _selectedGroupView->group();
    if (AlertsView *alerts = shownAlertsView())
        return alerts->group();
    return nullptr;
}

bool AppController::validateMenuItem(QAction *item) const
{
    using Command = MainWindow::Command;
    // The online commands follow the same rule as their toolbar items.
    if (item == _window->item(Command::GoOnline))
        return validateToolbarItem(QStringLiteral("Online"));
    if (item == _window->item(Command::GoOffline))
        return validateToolbarItem(QStringLiteral("Offline"));
    if (item == _window->item(Command::UpdateAll))
        return validateToolbarItem(QStringLiteral("Update"));
    // The node commands act on the selection of the view shown; one that could not act is not
    // offered (and its shortcut does nothing).
    const Node *node = shownSelectedNode();
    const int tag = item->data().isValid() ? item->data().toInt() : -1;
    if (tag == MainWindow::kZoomImageTag || tag == MainWindow::kSaveCopyTag)
        return _selectedGroupView && node && node->fileDownloaded();
    if (item == revealItem())
        return node && node->fileDownloaded();
    if (item == reloadItem() || item == scheduleItem())
        return node != nullptr;
    if (item == cancelDownloadItem())
        return node && shownGroup()->nodeIsInDownloadQueue(node);
    return true;
}

void AppController::validateMenus()
{
    _window->validateMenus([this](QAction *item) { return validateMenuItem(item); });
}

void AppController::refreshSelectedNodeData()
{
    if (_selectedGroupView)
        _selectedGroupView->refreshSelectedNodeData();
    else if (AlertsView *alerts = shownAlertsView())
        alerts->refreshSelectedNodeData();
}

void AppController::cancelSelectedNodeDownload()
{
    if (_selectedGroupView)
        _selectedGroupView->cancelSelectedNodeDownload();
    else if (AlertsView *alerts = shownAlertsView())
        alerts->cancelSelectedNodeDownload();
}

void AppController::revealSelectedNodeData()
{
    if (_selectedGroupView)
        _selectedGroupView->revealSelectedNodeData();
    else if (AlertsView *alerts = shownAlertsView())
        alerts->revealSelectedNodeData();
}

void AppController::openScheduleWindowForSelectedNode()
{
    ensureDialogs();
    if (_selectedGroupView)
        _selectedGroupView->openScheduleWindowForNode();
    else if (AlertsView *alerts = shownAlertsView())
        alerts->openScheduleWindowForNode();
}

void AppController::connectPreferencesPanel()
{
    connect(_preferencesPanel, &PreferencesPanel::logErrorsOnlyToggled, this,
            &AppController::setLogErrorsOnly);
    connect(_preferencesPanel, &PreferencesPanel::beepOnErrorsToggled, this,
            &AppController::setBeepOnErrors);
    connect(_preferencesPanel, &PreferencesPanel::downloadMissingDataToggled, this,
            &AppController::setDownloadMissingData);
    connect(_preferencesPanel, &PreferencesPanel::southernHemisphereToggled, this,
            &AppController::setSouthernHemisphere);
    connect(_preferencesPanel, &PreferencesPanel::timeoutValueChanged, this,
            &AppController::setTimeoutValue);
    connect(_preferencesPanel, &PreferencesPanel::notificationsChanged, this,
            [](const NotificationSettings &settings) {
                Preferences::shared().setNotifications(settings);
            });
}

// --- Start-up and shutdown --------------------------------------------------------------------

QString AppController::windowTitle() const
{
    // The application's name as users know it, whatever the executable is called.
    QString name = QGuiApplication::applicationDisplayName();
    if (!name.isEmpty())
        name[0] = name[0].toUpper();
    return QStringLiteral("%1 version %2").arg(name, QLatin1String(BuildInfo::version));
}

void AppController::setDataFolderOverride(const QString &path)
{
    _core->setDataFolderOverride(path);
}

QString AppController::dataFolderPath() const
{
    return _core->dataFolderPath();
}

void AppController::awakeFromNib()
{
    _window->setWindowTitle(windowTitle());

    QFile description(ResourceLocator::resourcePath(QStringLiteral("DefaultDescription.txt")));
    if (description.open(QIODevice::ReadOnly)) {
        _defaultDescription = QString::fromUtf8(description.readAll());
    } else {
        qWarning().noquote() << "Cannot read" << description.fileName();
        _defaultDescription = tr("<p>Select an item from the list to see it here.</p>");
    }

    _core->prepareDataFolder();
    loadPreferences();
    // The picture that the view shown first shows before anything is selected is drawn on
    // another processor while this thread builds the window.
    if (const int first = _lastView >= 0 && _lastView < MainViews::kCount ? _lastView : 0;
        first < 4)
        NamedImage::prepare({DomainGroup::placeholdersForGroup(first).splash},
                            _window->devicePixelRatioF());
    initToolbar();
    _awake = true;

    // The groups are read by their views. The view to be shown first is built and loaded now;
    // so is the Alerts view, whose width depends on its reports' titles (its menu fits the
    // longest), so that the window is laid out for it from the start. The others follow once
    // the window is on screen (continueLaunching()), or when needed.
    _views->startLoading(_defaultDescription);
    viewForNumber(_lastView);
    _views->ensure(kAlertsViewNumber);
}

void AppController::applicationDidFinishLaunching()
{
    setGroupView(_lastView);
    _launched = true;
    _views->startLaunching();
    _window->show();
    _window->raise();
    _window->activateWindow();

    // The rest waits until the first frame is on screen, one step per turn of the event loop.
    // A window that is never drawn (minimised, or on a display that does not draw) must not hold
    // back the start-up downloads: after half a second the steps start anyway.
    connect(_window, &MainWindow::firstFrameDrawn, this, &AppController::continueLaunching,
            Qt::SingleShotConnection);
    QTimer::singleShot(500, this, [this] {
        if (_launchStep == 0)
            continueLaunching();
    });
}

void AppController::continueLaunching()
{
    if (_launchFinished || !_launched || _terminated)
        return;
    switch (_launchStep++) {
    case 0:
        showOwnIcons();
        break;
    case 1:
        ensureDialogs();
        break;
    default:
        for (int number = 0; number < MainViews::kCount; ++number) {
            if (!_views->built(number)) {
                _views->ensure(number);
                QTimer::singleShot(0, this, &AppController::continueLaunching);
                return;
            }
        }
        finishLaunching();
        return;
    }
    QTimer::singleShot(0, this, &AppController::continueLaunching);
}

void AppController::showOwnIcons()
{
    // The window system asks for the application's picture at several sizes, and the icon
    // theme's index is read at its first use: both cost more than a frame, and neither is part of
    // what the window draws, so they wait until it has drawn its first frame.
    if (!_window->testAttribute(Qt::WA_SetWindowIcon))
        _window->setWindowIcon(NamedImage::icon(QStringLiteral("Vantorel")));
    _toolbar->loadThemeIcons();
}

void AppController::finishLaunching()
{
    if (!_awake || _launchFinished || _terminated)
        return;
    showOwnIcons();
    ensureDialogs();
    views();
    if (!_launched)
        return;
    _launchFinished = true;
    // Every group is read: what a killed write left behind can be told from the nodes' files.
    _core->removeStaleTemporaryFiles();
    runStartupDownloads();
    startScheduler();
    startWatching();

    // The placeholder pictures of every image view, rendered in the background, so that the first
    // switch to a view or the first missing item does not stop to draw them.
    QStringList placeholders;
    for (int group = 0; group < 4; ++group) {
        const DomainGroup::Placeholders names = DomainGroup::placeholdersForGroup(group);
        placeholders << names.splash << names.downloading << names.noData;
    }
    NamedImage::renderInBackground(placeholders, _window->devicePixelRatioF(), 1000);
}

void AppController::startWatching()
{
    NodeGroup *now = _core->groupNamed(QStringLiteral("Now"));
    if (!now || _watch)
        return;
    _watch = new WatchService(
        Settings::store(), _log, [] { return Preferences::shared().notifications(); }, this);
    _watch->watchGroup(now);
    _notifier = new DesktopNotifier(this);
    _notifier->setLog(_log);
    connect(_watch, &WatchService::eventsReady, _notifier, &DesktopNotifier::deliver);
    connect(_notifier, &DesktopNotifier::activated, this, &AppController::showNowView);
    // What arrived while the window was closed.
    _watch->evaluateSoon();
}

void AppController::showNowView()
{
    if (const GroupCatalogue::Group *now = GroupCatalogue::groupNamed(QStringLiteral("Now")))
        setGroupView(now->number);
    _window->showNormal();
    _window->raise();
    _window->activateWindow();
}

void AppController::windowShouldClose()
{
    QCoreApplication::quit();
}

void AppController::applicationWillTerminate()
{
    // Quitting can be asked for more than once (window closed, then a signal); shut down once.
    if (_terminated)
        return;
    _terminated = true;

    // A quit before start-up has built every view: the rest are built (and their groups read)
    // now, so that every node stores its state as in any other shutdown. Nothing more starts.
    if (_awake)
        views();

    // No responses are cached; dropping the connections is what is left to empty.
    NetworkAccess::manager()->clearAccessCache();

    for (GroupView *view :
         {_views->sunView(), _views->graphView(), _views->auroraView(), _views->earthView()}) {
        if (view)
            view->cleanup();
    }
    if (AlertsView *alerts = _views->alertsView())
        alerts->cleanup();
    if (MoonView *moon = _views->moonView())
        moon->cleanup();
    if (NowView *now = _views->nowView())
        now->cleanup();

    stopScheduler();
    _log->saveWindowFrame();
    savePreferences();
    // Everything saved above is in memory until written; write it before the process ends.
    Settings::sync();
}

// --- Preferences ------------------------------------------------------------------------------

bool AppController::isOnline() const
{
    return Preferences::shared().isOnline();
}

bool AppController::logErrorsOnly() const
{
    return Preferences::shared().logErrorsOnly();
}

bool AppController::beepOnErrors() const
{
    return Preferences::shared().beepOnErrors();
}

bool AppController::downloadMissingData() const
{
    return Preferences::shared().downloadMissingData();
}

float AppController::timeoutSeconds() const
{
    return Preferences::shared().timeoutSeconds();
}

void AppController::loadPreferences()
{
    QSettings &settings = Settings::store();
    Preferences &prefs = Preferences::shared();
    prefs.loadPreferences(settings);
    _lastView = prefs.lastView();
    DisplayTime::setUtc(prefs.showTimesInUTC());
    WindowAppearance::apply(prefs.appearance());
    showDisplayChoices();
    _window->restoreFrame();

    if (_preferencesPanel)
        showTimeoutValue();
}

void AppController::showTimeoutValue()
{
    const double timeout = std::trunc(double(Preferences::shared().timeoutSeconds()));
    const QSignalBlocker quiet(_preferencesPanel->timeoutValueField());
    _preferencesPanel->timeoutValueField()->setValue(int(std::clamp<double>(
        timeout, std::numeric_limits<int>::min(), std::numeric_limits<int>::max())));
}

void AppController::savePreferences()
{
    QSettings &settings = Settings::store();
    Preferences &prefs = Preferences::shared();
    prefs.setLastView(_lastView);
    prefs.savePreferences(settings);
    _window->saveFrame();
    settings.sync();
}

void AppController::openPreferencesPanel()
{
    ensureDialogs();
    const Preferences &prefs = Preferences::shared();
    const struct {
        QCheckBox *box;
        bool value;
    } boxes[] = {
        {_preferencesPanel->logErrorsOnlyButton(), prefs.logErrorsOnly()},
        {_preferencesPanel->beepOnErrorsButton(), prefs.beepOnErrors()},
        {_preferencesPanel->downloadMissingDataButton(), prefs.downloadMissingData()},
        {_preferencesPanel->southernHemisphereButton(), prefs.southernHemisphere()},
    };
    for (const auto &entry : boxes) {
        const QSignalBlocker quiet(entry.box);
        entry.box->setChecked(entry.value);
    }
    _preferencesPanel->showNotifications(prefs.notifications());
    _preferencesPanel->adjustSize();
    if (_window->isVisible())
        _preferencesPanel->move(_window->geometry().center() - _preferencesPanel->rect().center());
    _preferencesPanel->show();
    _preferencesPanel->raise();
    _preferencesPanel->activateWindow();
}

void AppController::setLogErrorsOnly(bool on)
{
    Preferences::shared().setLogErrorsOnly(on);
}

void AppController::setBeepOnErrors(bool on)
{
    Preferences::shared().setBeepOnErrors(on);
}

void AppController::setDownloadMissingData(bool on)
{
    Preferences::shared().setDownloadMissingData(on);
}

void AppController::setSouthernHemisphere(bool on)
{
    Preferences::shared().setSouthernHemisphere(on);
    // A Moon view not built yet reads the preference when it is.
    if (MoonView *moon = _views->moonView())
        moon->setHemisphere(on);
}

void AppController::setTimeoutValue(int seconds)
{
    ensureDialogs();
    QSpinBox *field = _preferencesPanel->timeoutValueField();
    if (field->value() != seconds) {
        const QSignalBlocker quiet(field);
        field->setValue(seconds);
    }
    Preferences::shared().setTimeoutSeconds(float(seconds));
}

void AppController::setShowTimesInUTC(bool on)
{
    Preferences::shared().setShowTimesInUTC(on);
    DisplayTime::setUtc(on);
    showDisplayChoices();
    TimeTicker::shared()->tellNow();
}

void AppController::setAppearance(int appearance)
{
    Preferences &prefs = Preferences::shared();
    prefs.setAppearance(Preferences::Appearance(appearance));
    WindowAppearance::apply(prefs.appearance());
    showDisplayChoices();
    // The artwork follows the palette as it is drawn; what is coloured by a view's own texts
    // is redrawn with the times.
    TimeTicker::shared()->tellNow();
}

void AppController::showDisplayChoices()
{
    using Command = MainWindow::Command;
    const Preferences &prefs = Preferences::shared();
    {
        const QSignalBlocker quiet(_window->item(Command::ShowTimesInUTC));
        _window->item(Command::ShowTimesInUTC)->setChecked(prefs.showTimesInUTC());
    }
    const Command chosen =
        prefs.appearance() == Preferences::Appearance::Dark    ? Command::AppearanceDark
        : prefs.appearance() == Preferences::Appearance::Light ? Command::AppearanceLight
                                                               : Command::AppearanceSystem;
    _window->item(chosen)->setChecked(true);
}

// --- Toolbar and views ------------------------------------------------------------------------

void AppController::initToolbar()
{
    _toolbar = new MainToolbar(_window);
    connect(_toolbar, &MainToolbar::itemSelected, this, &AppController::didSelectToolbarItem);
    _toolbar->loadConfiguration();
    _toolbar->validate(isOnline());
}

void AppController::runToolbarConfig()
{
    _toolbar->runToolbarConfig();
}

void AppController::didSelectToolbarItem(const QString &identifier)
{
    const int view = ToolbarItems::viewNumberForIdentifier(identifier);
    if (view >= 0)
        setGroupView(view);
    else if (identifier == QLatin1String("Update"))
        updateAllNodes();
    else if (identifier == QLatin1String("Cancel"))
        cancelAllDownloads();
    else if (identifier == QLatin1String("Online"))
        goOnline();
    else if (identifier == QLatin1String("Offline"))
        goOffline();
    else if (identifier == QLatin1String("Prefs"))
        openPreferencesPanel();
}

bool AppController::validateToolbarItem(const QString &identifier) const
{
    return ToolbarItems::isEnabled(identifier, isOnline());
}

void AppController::onlineStateChanged()
{
    if (_toolbar)
        _toolbar->validate(isOnline());
    validateMenus();
}

QWidget *AppController::viewForNumber(int viewNumber)
{
    return _views->ensure(viewNumber >= 0 && viewNumber < MainViews::kCount ? viewNumber : 0);
}

void AppController::setGroupView(int viewNumber)
{
    _lastView = viewNumber;
    QWidget *view = viewForNumber(viewNumber);
    attachView(view, true, true);
    _selectedGroupView = qobject_cast<GroupView *>(view);
    if (_toolbar)
        _toolbar->setSelectedItemIdentifier(ToolbarItems::identifierForViewNumber(viewNumber));
    validateMenus();
}

void AppController::setGroupViewFromMenu(QAction *item)
{
    setGroupView(item->data().toInt());
}

void AppController::attachView(QWidget *view, bool display, bool animate)
{
    Q_UNUSED(animate);
    // The stack keeps every view alive; only the one shown takes the window's content area, and
    // the window keeps its frame.
    _window->content()->setCurrentWidget(view);
    if (display)
        view->update();
}

// --- Global commands --------------------------------------------------------------------------
// Each command over every group first finishes what start-up left for after the first frame, so
// that it finds every group read and acts after the start-up steps, as it would have anyway.

void AppController::runStartupDownloads()
{
    _core->runStartupDownloads();
}

void AppController::updateAllNodes()
{
    finishLaunching();
    _core->updateAllNodes();
}

void AppController::cancelAllDownloads()
{
    finishLaunching();
    _core->cancelAllDownloads();
}

void AppController::startScheduler()
{
    finishLaunching();
    _core->startScheduler();
}

void AppController::stopScheduler()
{
    finishLaunching();
    _core->stopScheduler();
}

void AppController::runAllScheduledUpdates()
{
    finishLaunching();
    _core->runAllScheduledUpdates();
}

std::unique_ptr<QMessageBox> AppController::makeConfirmation(QWidget *parent, const QString &title,
                                                             const QString &text,
                                                             const QString &informativeText,
                                                             const QString &accept)
{
    auto alert = std::make_unique<QMessageBox>(parent);
    alert->setIcon(QMessageBox::Warning);
    alert->setWindowTitle(title);
    alert->setText(text);
    alert->setInformativeText(informativeText);
    QPushButton *button = alert->addButton(accept, QMessageBox::AcceptRole);
    alert->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    alert->setDefaultButton(button);
    alert->setWindowModality(Qt::WindowModal);
    return alert;
}

void AppController::emptyCache()
{
    const auto alert = makeConfirmation(
        _window, tr("Empty Cache"),
        QStringLiteral("Do you really want to empty the Vantorel cache?"),
        QStringLiteral("This will require all data to be reloaded before being viewed, and all "
                       "current downloads will be stopped."),
        QStringLiteral("Empty"));
    alert->exec();
    if (alert->clickedButton() != alert->defaultButton())
        return;
    finishLaunching();
    _core->emptyGroupCaches();
}

void AppController::clearHistory()
{
    const auto alert = makeConfirmation(
        _window, tr("Clear History"), tr("Do you really want to clear the history?"),
        tr("The Now view's charts will lose every value kept from earlier downloads and start "
           "again from the data files on disk."),
        tr("Clear"));
    alert->exec();
    if (alert->clickedButton() != alert->defaultButton())
        return;
    _core->clearHistory();
}

void AppController::zoomSelectedNodeData()
{
    if (_selectedGroupView)
        _selectedGroupView->zoomSelectedNodeData();
}

void AppController::saveSelectedNodeData()
{
    if (_selectedGroupView)
        _selectedGroupView->saveNodeImage();
}

void AppController::viewDataSourceLinkClicked(const QString &address)
{
    const QUrl url = QUrl::fromUserInput(address.trimmed());
    if (url.isValid() && !address.trimmed().isEmpty())
        QDesktopServices::openUrl(url);
}

void AppController::openAboutLink(const QUrl &address)
{
    QDesktopServices::openUrl(address);
    if (_aboutBoxWindow)
        _aboutBoxWindow->close();
}

void AppController::openAuthorHomePageLink()
{
    openAboutLink(AboutLinks::authorHomePage());
}

void AppController::openMailtoLink()
{
    openAboutLink(AboutLinks::mail());
}

void AppController::openDonationLink()
{
    openAboutLink(AboutLinks::donation());
}

void AppController::openRelatedSiteOneLink()
{
    openAboutLink(AboutLinks::relatedSiteOne());
}

void AppController::openRelatedSiteTwoLink()
{
    openAboutLink(AboutLinks::relatedSiteTwo());
}

void AppController::goOnline()
{
    finishLaunching();
    _core->goOnline();
}

void AppController::goOffline()
{
    finishLaunching();
    _core->goOffline();
}

void AppController::toggleOnlineStatus()
{
    finishLaunching();
    _core->toggleOnlineStatus();
}

void AppController::openAboutBox()
{
    ensureDialogs();
    _aboutBoxWindow->adjustSize();
    if (_window->isVisible())
        _aboutBoxWindow->move(_window->geometry().center() - _aboutBoxWindow->rect().center());
    _aboutBoxWindow->show();
    _aboutBoxWindow->raise();
    _aboutBoxWindow->activateWindow();
}
