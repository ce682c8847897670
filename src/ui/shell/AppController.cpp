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
#include "core/util/ResourceLocator.h"
#include "ui/alerts/AlertsView.h"
#include "ui/common/NamedImage.h"
#include "ui/log/ActivityLog.h"
#include "ui/moon/MoonView.h"
#include "ui/shell/AboutBox.h"
#include "ui/shell/MainToolbar.h"
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
#include <QMenuBar>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStyle>

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
    _window->setWindowIcon(NamedImage::icon(QStringLiteral("Vantorel")));
    _window->resize(1040, 720);
    connect(_window, &MainWindow::closeRequested, this, &AppController::windowShouldClose);

    _content = new QStackedWidget;
    _sunView = new GroupView(_core->sunGroup(), _log);
    _graphView = new GroupView(_core->graphGroup(), _log);
    _auroraView = new GroupView(_core->auroraGroup(), _log);
    _earthView = new GroupView(_core->earthGroup(), _log);
    _alertsView = new AlertsView(_core->alertsGroup(), _log);
    _moonView = new MoonView;
    for (QWidget *view : views())
        _content->addWidget(view);
    _window->setCentralWidget(_content);

    _preferencesPanel = new PreferencesPanel(_window);
    _aboutBoxWindow = new AboutBox(_window);
    // One schedule sheet serves every data view.
    _nodeScheduler = new NodeScheduler(_window);
    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView})
        view->setNodeSchedulerWindow(_nodeScheduler);
    _alertsView->setNodeSchedulerWindow(_nodeScheduler);
    connectPreferencesPanel();
    connect(_aboutBoxWindow, &AboutBox::authorHomePageRequested, this,
            &AppController::openAuthorHomePageLink);
    connect(_aboutBoxWindow, &AboutBox::mailRequested, this, &AppController::openMailtoLink);
    connect(_aboutBoxWindow, &AboutBox::donationRequested, this, &AppController::openDonationLink);
    connect(_aboutBoxWindow, &AboutBox::relatedSiteOneRequested, this,
            &AppController::openRelatedSiteOneLink);
    connect(_aboutBoxWindow, &AboutBox::relatedSiteTwoRequested, this,
            &AppController::openRelatedSiteTwoLink);
    buildMenus();

    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView}) {
        view->awakeFromNib();
        connect(view, &GroupView::dataSourceLinkClicked, this,
                &AppController::viewDataSourceLinkClicked);
        connect(view, &GroupView::selectionChanged, this, &AppController::validateMenus);
    }
    connect(_alertsView, &AlertsView::selectionChanged, this, &AppController::validateMenus);
    _alertsView->awakeFromNib();
    _moonView->awakeFromNib();
    _log->awakeFromNib();

    connect(_core, &AppCore::onlineStateChanged, this, &AppController::onlineStateChanged);
}

QList<QWidget *> AppController::views() const
{
    return {_sunView, _graphView, _auroraView, _earthView, _alertsView, _moonView};
}

void AppController::buildMenus()
{
    QMenuBar *bar = _window->menuBar();
    const auto add = [this](QMenu *menu, const QString &text, auto slot,
                            const QKeySequence &shortcut = {}, int tag = -1) {
        QAction *action = menu->addAction(text);
        connect(action, &QAction::triggered, this, slot);
        if (!shortcut.isEmpty())
            action->setShortcut(shortcut);
        if (tag >= 0)
            action->setData(tag);
        _menuItems.append(action);
        return action;
    };

    QMenu *file = bar->addMenu(tr("&File"));
    add(file, tr("&Save a Copy…"), &AppController::saveSelectedNodeData, QKeySequence::SaveAs, 767);
    file->addSeparator();
    QAction *quit = add(
        file, tr("&Quit"), [] { QCoreApplication::quit(); }, QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);

    QMenu *edit = bar->addMenu(tr("&Edit"));
    QAction *prefs = add(edit, tr("&Preferences…"), &AppController::openPreferencesPanel,
                         QKeySequence(Qt::CTRL | Qt::Key_Comma));
    prefs->setMenuRole(QAction::PreferencesRole);

    QMenu *view = bar->addMenu(tr("&View"));
    const QStringList names = ToolbarItems::selectableItemIdentifiers();
    for (int i = 0; i < names.size(); ++i) {
        QAction *item = view->addAction(ToolbarItems::item(names[i])->label);
        item->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)));
        item->setData(i);
        connect(item, &QAction::triggered, this, [this, item] { setGroupViewFromMenu(item); });
        _menuItems.append(item);
    }
    view->addSeparator();
    add(view, tr("Customize &Toolbar…"), &AppController::runToolbarConfig);

    QMenu *data = bar->addMenu(tr("&Data"));
    _updateAllItem = add(data, tr("&Update All"), &AppController::updateAllNodes,
                         QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    add(data, tr("&Cancel All Downloads"), &AppController::cancelAllDownloads,
        QKeySequence(Qt::CTRL | Qt::Key_Period));
    data->addSeparator();
    _goOnlineItem = add(data, tr("Go &Online"), &AppController::goOnline);
    _goOfflineItem = add(data, tr("Go O&ffline"), &AppController::goOffline);
    data->addSeparator();
    add(data, tr("&Empty Cache…"), &AppController::emptyCache);

    QMenu *node = bar->addMenu(tr("&Node"));
    _reloadItem =
        add(node, tr("&Reload"), &AppController::refreshSelectedNodeData, QKeySequence::Refresh);
    _cancelDownloadItem =
        add(node, tr("&Cancel Download"), &AppController::cancelSelectedNodeDownload);
    add(node, tr("&Zoom Image"), &AppController::zoomSelectedNodeData,
        QKeySequence(Qt::CTRL | Qt::Key_I), 766);
    _revealItem = add(node, tr("Reveal in &File Manager"), &AppController::revealSelectedNodeData);
    _scheduleItem = add(node, tr("&Schedule…"), &AppController::openScheduleWindowForSelectedNode);

    QMenu *window = bar->addMenu(tr("&Window"));
    add(
        window, tr("Activity &Log"), [this] { _log->openLogWindow(); },
        QKeySequence(Qt::CTRL | Qt::Key_L));
    add(window, tr("&Clear Log"), [this] { _log->clearLog(); });

    QMenu *help = bar->addMenu(tr("&Help"));
    QAction *about = add(help, tr("&About Vantorel"), &AppController::openAboutBox);
    about->setMenuRole(QAction::AboutRole);

    for (QMenu *menu : {file, edit, view, data, node, window, help})
        connect(menu, &QMenu::aboutToShow, this, &AppController::validateMenus);
}

QAction *AppController::menuItem(int tag) const
{
    for (QAction *item : _menuItems) {
        if (item->data().isValid() && item->data().toInt() == tag)
            return item;
    }
    return nullptr;
}

Node *AppController::shownSelectedNode() const
{
    if (_selectedGroupView)
        return _selectedGroupView->selectedNode();
    if (_content->currentWidget() == _alertsView)
        return _alertsView->selectedNode();
    return nullptr;
}

NodeGroup *AppController::shownGroup() const
{
    if (_selectedGroupView)
        return _selectedGroupView->group();
    if (_content->currentWidget() == _alertsView)
        return _alertsView->group();
    return nullptr;
}

bool AppController::validateMenuItem(QAction *item) const
{
    // The node commands act on the selection of the view shown; one that could not act is not
    // offered (and its shortcut does nothing).
    const Node *node = shownSelectedNode();
    const int tag = item->data().isValid() ? item->data().toInt() : -1;
    if (tag == 766 || tag == 767)
        return _selectedGroupView && node && node->fileDownloaded();
    if (item == _revealItem)
        return node && node->fileDownloaded();
    if (item == _reloadItem || item == _scheduleItem)
        return node != nullptr;
    if (item == _cancelDownloadItem)
        return node && shownGroup()->nodeIsInDownloadQueue(node);
    return true;
}

void AppController::validateMenus()
{
    for (QAction *item : std::as_const(_menuItems))
        item->setEnabled(validateMenuItem(item));
    // The online commands follow the same rule as their toolbar items.
    _goOnlineItem->setEnabled(validateToolbarItem(QStringLiteral("Online")));
    _goOfflineItem->setEnabled(validateToolbarItem(QStringLiteral("Offline")));
    _updateAllItem->setEnabled(validateToolbarItem(QStringLiteral("Update")));
}

void AppController::refreshSelectedNodeData()
{
    if (_selectedGroupView)
        _selectedGroupView->refreshSelectedNodeData();
    else if (_content->currentWidget() == _alertsView)
        _alertsView->refreshSelectedNodeData();
}

void AppController::cancelSelectedNodeDownload()
{
    if (_selectedGroupView)
        _selectedGroupView->cancelSelectedNodeDownload();
    else if (_content->currentWidget() == _alertsView)
        _alertsView->cancelSelectedNodeDownload();
}

void AppController::revealSelectedNodeData()
{
    if (_selectedGroupView)
        _selectedGroupView->revealSelectedNodeData();
    else if (_content->currentWidget() == _alertsView)
        _alertsView->revealSelectedNodeData();
}

void AppController::openScheduleWindowForSelectedNode()
{
    if (_selectedGroupView)
        _selectedGroupView->openScheduleWindowForNode();
    else if (_content->currentWidget() == _alertsView)
        _alertsView->openScheduleWindowForNode();
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
    _aboutBoxWindow->versionNumberField()->setText(
        QStringLiteral("Version Number %1").arg(QLatin1String(BuildInfo::version)));

    QFile description(ResourceLocator::resourcePath(QStringLiteral("DefaultDescription.txt")));
    if (description.open(QIODevice::ReadOnly)) {
        _defaultDescription = QString::fromUtf8(description.readAll());
    } else {
        qWarning().noquote() << "Cannot read" << description.fileName();
        _defaultDescription = tr("<p>Select an item from the list to see it here.</p>");
    }

    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView})
        view->setDefaultDescription(_defaultDescription);

    const QString dataFolder = _core->prepareDataFolder();

    loadPreferences();
    initToolbar();

    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView}) {
        const GroupCatalogue::Group *group = GroupCatalogue::group(view->groupNumber());
        view->loadDomainDataForGroup(group->name, group->number, group->definitionFile, dataFolder);
    }
    _alertsView->loadDictionaryData(GroupCatalogue::group(GroupCatalogue::Alerts)->definitionFile,
                                    dataFolder);
    _core->removeStaleTemporaryFiles();

    _moonView->setHemisphere(Preferences::shared().southernHemisphere());
}

void AppController::applicationDidFinishLaunching()
{
    setGroupView(_lastView);
    runStartupDownloads();
    startScheduler();
    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView})
        view->applicationDidFinishLaunching();
    _window->show();
    _window->raise();
    _window->activateWindow();

    // The placeholder pictures of every image view, rendered once the window is up, so that the
    // first switch to a view or the first missing item does not stop to draw them.
    QStringList placeholders;
    for (const GroupCatalogue::Group &group : GroupCatalogue::groups()) {
        if (group.layout == GroupCatalogue::Layout::Domains)
            placeholders << group.placeholders.splash << group.placeholders.downloading
                         << group.placeholders.noData;
    }
    NamedImage::renderInIdleTime(placeholders, _window->devicePixelRatioF(), 1000);
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

    // No responses are cached; dropping the connections is what is left to empty.
    NetworkAccess::manager()->clearAccessCache();

    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView})
        view->cleanup();
    _alertsView->cleanup();
    _moonView->cleanup();

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

    const QByteArray frame = settings.value(QLatin1String(MainWindow::kFrameKey)).toByteArray();
    if (frame.isEmpty() || !_window->restoreGeometry(frame)) {
        // First run (or a frame that cannot be used): the default size, made smaller on a small
        // screen, centred.
        if (const QScreen *screen = QGuiApplication::primaryScreen()) {
            const QRect available = screen->availableGeometry();
            const QSize size = _window->size().boundedTo(available.size() * 0.9);
            _window->setGeometry(
                QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, available));
        }
    }

    const double timeout = std::trunc(double(prefs.timeoutSeconds()));
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
    settings.setValue(QLatin1String(MainWindow::kFrameKey), _window->saveGeometry());
    settings.sync();
}

void AppController::openPreferencesPanel()
{
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
    _moonView->setHemisphere(on);
}

void AppController::setTimeoutValue(int seconds)
{
    QSpinBox *field = _preferencesPanel->timeoutValueField();
    if (field->value() != seconds) {
        const QSignalBlocker quiet(field);
        field->setValue(seconds);
    }
    Preferences::shared().setTimeoutSeconds(float(seconds));
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

QWidget *AppController::viewForNumber(int viewNumber) const
{
    switch (viewNumber) {
    case 1:
        return _graphView;
    case 2:
        return _auroraView;
    case 3:
        return _earthView;
    case 4:
        return _alertsView;
    case 5:
        return _moonView;
    default:
        return _sunView;
    }
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
    _content->setCurrentWidget(view);
    if (display)
        view->update();
}

// --- Global commands --------------------------------------------------------------------------

void AppController::runStartupDownloads()
{
    _core->runStartupDownloads();
}

void AppController::updateAllNodes()
{
    _core->updateAllNodes();
}

void AppController::cancelAllDownloads()
{
    _core->cancelAllDownloads();
}

void AppController::startScheduler()
{
    _core->startScheduler();
}

void AppController::stopScheduler()
{
    _core->stopScheduler();
}

void AppController::runAllScheduledUpdates()
{
    _core->runAllScheduledUpdates();
}

std::unique_ptr<QMessageBox> AppController::makeEmptyCacheAlert(QWidget *parent)
{
    auto alert = std::make_unique<QMessageBox>(parent);
    alert->setIcon(QMessageBox::Warning);
    alert->setWindowTitle(tr("Empty Cache"));
    alert->setText(QStringLiteral("Do you really want to empty the Vantorel cache?"));
    alert->setInformativeText(QStringLiteral("This will require all data to be reloaded before "
                                             "being viewed, and all current downloads will be "
                                             "stopped."));
    QPushButton *empty = alert->addButton(QStringLiteral("Empty"), QMessageBox::AcceptRole);
    alert->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    alert->setDefaultButton(empty);
    alert->setWindowModality(Qt::WindowModal);
    return alert;
}

void AppController::emptyCache()
{
    const std::unique_ptr<QMessageBox> alert = makeEmptyCacheAlert(_window);
    alert->exec();
    if (alert->clickedButton() != alert->defaultButton())
        return;
    _core->emptyGroupCaches();
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
    _core->goOnline();
}

void AppController::goOffline()
{
    _core->goOffline();
}

void AppController::toggleOnlineStatus()
{
    _core->toggleOnlineStatus();
}

void AppController::openAboutBox()
{
    _aboutBoxWindow->adjustSize();
    if (_window->isVisible())
        _aboutBoxWindow->move(_window->geometry().center() - _aboutBoxWindow->rect().center());
    _aboutBoxWindow->show();
    _aboutBoxWindow->raise();
    _aboutBoxWindow->activateWindow();
}
