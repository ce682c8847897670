#include "AppController.h"

#include "AboutBox.h"
#include "AboutLinks.h"
#include "AppCore.h"
#include "BuildInfo.h"
#include "MainWindow.h"
#include "Preferences.h"
#include "PreferencesPanel.h"
#include "ResourceLocator.h"
#include "ToolbarItems.h"
#include "alerts/AlertsView.h"
#include "groups/GroupView.h"
#include "moon/MoonView.h"
#include "nodes/NetworkAccess.h"
#include "nodes/NodeScheduler.h"
#include "support/ActivityLog.h"
#include "support/NamedImage.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QNetworkAccessManager>
#include <QScreen>
#include <QSettings>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStyle>
#include <QToolBar>

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
    connect(_aboutBoxWindow, &AboutBox::donationRequested, this,
            &AppController::openDonationLink);
    connect(_aboutBoxWindow, &AboutBox::relatedSiteOneRequested, this,
            &AppController::openRelatedSiteOneLink);
    connect(_aboutBoxWindow, &AboutBox::relatedSiteTwoRequested, this,
            &AppController::openRelatedSiteTwoLink);
    buildMenus();

    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView}) {
        view->awakeFromNib();
        connect(view, &GroupView::dataSourceLinkClicked, this,
                &AppController::viewDataSourceLinkClicked);
    }
    _alertsView->awakeFromNib();
    _moonView->awakeFromNib();
    _log->awakeFromNib();

    connect(_core, &AppCore::onlineStateChanged, this, &AppController::updateToolbarState);
}

QList<QWidget *> AppController::views() const
{
    return {_sunView, _graphView, _auroraView, _earthView, _alertsView, _moonView};
}

void AppController::buildMenus()
{
    QMenuBar *bar = _window->menuBar();

    QMenu *file = bar->addMenu(tr("&File"));
    QAction *quit = file->addAction(tr("&Quit"), qApp, &QCoreApplication::quit);
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);

    QMenu *view = bar->addMenu(tr("&View"));
    const QStringList names = ToolbarItems::selectableItemIdentifiers();
    for (int i = 0; i < names.size(); ++i) {
        QAction *action = view->addAction(names[i], this, [this, i] { setGroupView(i); });
        action->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)));
        action->setData(i);
    }

    QMenu *window = bar->addMenu(tr("&Window"));
    window->addAction(tr("Activity &Log"), _log, &ActivityLog::openLogWindow);
    window->addAction(tr("&Clear Log"), _log, &ActivityLog::clearLog);
    QAction *prefs = window->addAction(tr("&Preferences…"), this,
                                       &AppController::openPreferencesPanel);
    prefs->setShortcut(QKeySequence::Preferences);
    prefs->setMenuRole(QAction::PreferencesRole);

    QMenu *help = bar->addMenu(tr("&Help"));
    QAction *about = help->addAction(tr("&About Vantorel"), this, &AppController::openAboutBox);
    about->setMenuRole(QAction::AboutRole);
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
    const QString executable = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    return QStringLiteral("%1 version %2").arg(executable, QLatin1String(BuildInfo::version));
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

    _sunView->loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                     dataFolder);
    _graphView->loadDomainDataForGroup(QStringLiteral("Graphs"), 1,
                                       QStringLiteral("DataGraphs.plist"), dataFolder);
    _auroraView->loadDomainDataForGroup(QStringLiteral("Aurora"), 2,
                                        QStringLiteral("DataAurora.plist"), dataFolder);
    _earthView->loadDomainDataForGroup(QStringLiteral("Earth"), 3,
                                       QStringLiteral("DataEarth.plist"), dataFolder);
    _alertsView->loadDictionaryData(QStringLiteral("DataAlerts.plist"), dataFolder);

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
    QSettings settings;
    Preferences &prefs = Preferences::shared();
    prefs.loadPreferences(settings);
    _lastView = prefs.lastView();

    const QByteArray frame = settings.value(QLatin1String(MainWindow::kFrameKey)).toByteArray();
    if (frame.isEmpty() || !_window->restoreGeometry(frame)) {
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            _window->setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter,
                                                     _window->size(),
                                                     screen->availableGeometry()));
    }

    const double timeout = std::trunc(double(prefs.timeoutSeconds()));
    const QSignalBlocker quiet(_preferencesPanel->timeoutValueField());
    _preferencesPanel->timeoutValueField()->setValue(int(std::clamp<double>(
        timeout, std::numeric_limits<int>::min(), std::numeric_limits<int>::max())));
}

void AppController::savePreferences()
{
    QSettings settings;
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
        _preferencesPanel->move(_window->geometry().center() -
                                _preferencesPanel->rect().center());
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
    _toolbar = new QToolBar(tr("Toolbar"), _window);
    _toolbar->setObjectName(QStringLiteral("toolbar"));
    _toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    _toolbar->setMovable(false);
    _window->addToolBar(_toolbar);

    for (const QString &identifier : ToolbarItems::defaultItemIdentifiers()) {
        if (ToolbarItems::isStandard(identifier)) {
            if (identifier == QLatin1String(ToolbarItems::kFlexibleSpace)) {
                auto *spacer = new QWidget;
                spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
                _toolbar->addWidget(spacer);
            } else if (identifier == QLatin1String(ToolbarItems::kSeparator)) {
                _toolbar->addSeparator();
            }
            continue;
        }
        const auto item = ToolbarItems::item(identifier);
        QAction *action = _toolbar->addAction(NamedImage::icon(item->image), item->label);
        action->setObjectName(identifier);
        action->setData(identifier);
        const int viewNumber = ToolbarItems::viewNumberForIdentifier(identifier);
        if (viewNumber >= 0) {
            action->setCheckable(true);
            connect(action, &QAction::triggered, this, [this, viewNumber] {
                setGroupView(viewNumber);
            });
        } else if (identifier == QLatin1String("Online")) {
            connect(action, &QAction::triggered, this, &AppController::goOnline);
        } else if (identifier == QLatin1String("Offline")) {
            connect(action, &QAction::triggered, this, &AppController::goOffline);
        }
        _toolbarActions.append(action);
    }
    updateToolbarState();
}

void AppController::updateToolbarState()
{
    const bool online = isOnline();
    const QString selected = ToolbarItems::identifierForViewNumber(_lastView);
    for (QAction *action : std::as_const(_toolbarActions)) {
        const QString identifier = action->data().toString();
        action->setEnabled(ToolbarItems::isEnabled(identifier, online));
        if (action->isCheckable())
            action->setChecked(identifier == selected);
    }
}

QWidget *AppController::viewForNumber(int viewNumber) const
{
    switch (viewNumber) {
    case 1: return _graphView;
    case 2: return _auroraView;
    case 3: return _earthView;
    case 4: return _alertsView;
    case 5: return _moonView;
    default: return _sunView;
    }
}

void AppController::setGroupView(int viewNumber)
{
    _lastView = viewNumber;
    QWidget *view = viewForNumber(viewNumber);
    attachView(view, true, true);
    _selectedGroupView = qobject_cast<GroupView *>(view);
    updateToolbarState();
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
