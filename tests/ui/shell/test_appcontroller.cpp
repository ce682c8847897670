#include "TestEnvironment.h"
#include "TestHttpServer.h"
#include "UrlCatcher.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"
#include "ui/alerts/AlertsView.h"
#include "ui/log/ActivityLog.h"
#include "ui/moon/MoonView.h"
#include "ui/shell/AboutBox.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainWindow.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/ImageController.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrlQuery>
#include <QtTest>

#include <csignal>

// The application's life: start-up, what it restores, and the orderly shutdown, both when the
// main window closes and when the process is asked to end by a signal.
class TestAppController : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void singleInstance();
    void firstStart();
    void restoresTheLastView_data();
    void restoresTheLastView();
    void offlineAtLaunchQueuesNothing();
    void southernHemisphereReachesTheMoon();
    void forwardedCommandsNeedAnImageView();
    void emptyCacheAsksFirst_data();
    void emptyCacheAsksFirst();
    void aboutLinksOpenThenClose();
    void hiddenViewKeepsWorking();
    void signalsShutDownInOrder_data();
    void signalsShutDownInOrder();
    // Last: it runs the application's event loop to its end.
    void closingTheWindowQuits();

private:
    void start()
    {
        _controller = AppController::create();
        QVERIFY(_controller);
        _controller->awakeFromNib();
        _controller->applicationDidFinishLaunching();
    }
    AppController *_controller = nullptr;
};

void TestAppController::init()
{
    TestEnvironment::resetState();
}

void TestAppController::cleanup()
{
    delete _controller;
    _controller = nullptr;
}

void TestAppController::singleInstance()
{
    _controller = AppController::create();
    QCOMPARE(AppController::sharedInstance(), _controller);
    QTest::ignoreMessage(QtWarningMsg, "Attempt to allocate more than one AppController object!");
    QVERIFY(!AppController::create());
    QCOMPARE(AppController::sharedInstance(), _controller);
}

void TestAppController::firstStart()
{
    start();
    QCOMPARE(_controller->window()->windowTitle(), QStringLiteral("Vantorel version 0.1.0"));
    QCOMPARE(_controller->aboutBox()->versionNumberField()->text(),
             QStringLiteral("Version Number 0.1.0"));

    QFile description(QStringLiteral(VANTOREL_TEST_RESOURCE_DIR "/DefaultDescription.txt"));
    QVERIFY(description.open(QIODevice::ReadOnly));
    QCOMPARE(_controller->defaultDescription(), QString::fromUtf8(description.readAll()));

    const QString dataFolder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
        QStringLiteral("/Vantorel Data");
    QCOMPARE(_controller->dataFolderPath(), dataFolder);
    QVERIFY(QFileInfo(dataFolder).isDir());

    // Every group loaded its bundled file, each node pointing into the data folder.
    AppCore *core = _controller->core();
    for (NodeGroup *group : core->groupsInViewOrder()) {
        QVERIFY2(!group->allNodes().isEmpty(), qPrintable(group->groupName()));
        QVERIFY(group->allNodes().first()->filePath().startsWith(dataFolder + QLatin1Char('/')));
    }
    QCOMPARE(core->sunGroup()->groupName(), QStringLiteral("Sun"));
    QCOMPARE(core->earthGroup()->groupNumber(), 3);
    QCOMPARE(_controller->alertsView()->nodeListMenu()->count(), core->alertsGroup()->nodeCount());

    QCOMPARE(_controller->lastView(), 0);
    auto *stack = qobject_cast<QStackedWidget *>(_controller->window()->centralWidget());
    QCOMPARE(stack->currentWidget(), _controller->sunView());
    QCOMPARE(_controller->selectedGroupView(), _controller->sunView());
    QVERIFY(core->schedulerRunning());
    QVERIFY(_controller->window()->isVisible());
    QVERIFY(_controller->isOnline());
    QCOMPARE(_controller->timeoutSeconds(), 60.0f);
}

void TestAppController::restoresTheLastView_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("shownIndex");
    QTest::addColumn<bool>("imageView");
    QTest::newRow("Graphs") << 1 << 1 << true;
    QTest::newRow("Alerts") << 4 << 4 << false;
    QTest::newRow("Moon") << 5 << 5 << false;
    QTest::newRow("7 shows the Sun") << 7 << 0 << true;
    QTest::newRow("-1 shows the Sun") << -1 << 0 << true;
}

void TestAppController::restoresTheLastView()
{
    QFETCH(int, stored);
    QFETCH(int, shownIndex);
    QFETCH(bool, imageView);
    // Only the view on screen is laid out, so only its layout is stored at quit; the others
    // keep what they had (here: nothing, or the Moon's earlier size).
    const QStringList layoutKeys = {"SunViewSplitViewRects",    "GraphsViewSplitViewRects",
                                    "AuroraViewSplitViewRects", "EarthViewSplitViewRects",
                                    "AlertsViewSize",           "MoonViewSize"};
    QSettings settings;
    settings.setValue(QStringLiteral("MoonViewSize"), QStringLiteral("{123, 45}"));
    settings.setValue(QStringLiteral("lastView"), stored);
    start();
    auto *stack = qobject_cast<QStackedWidget *>(_controller->window()->centralWidget());
    QCOMPARE(stack->currentIndex(), shownIndex);
    QCOMPARE(_controller->selectedGroupView() != nullptr, imageView);
    QCOMPARE(_controller->lastView(), stored); // kept as it was, and stored so
    _controller->applicationWillTerminate();
    QCOMPARE(QSettings().value(QStringLiteral("lastView")).toInt(), stored);
    for (int view = 0; view < 5; ++view)
        QCOMPARE(settings.contains(layoutKeys[view]), view == shownIndex);
    QCOMPARE(settings.value(layoutKeys[5]) == QStringLiteral("{123, 45}"), shownIndex != 5);
}

void TestAppController::offlineAtLaunchQueuesNothing()
{
    QSettings settings;
    settings.setValue(QStringLiteral("isOnline"), 0);
    settings.setValue(QStringLiteral("downloadAtStartupNodeRSGA.txt"), 1);
    start();
    QVERIFY(!_controller->isOnline());
    QVERIFY(_controller->core()->alertsGroup()->downloadQueue().isEmpty());
    // The timer runs anyway; its ticks do nothing while offline.
    QVERIFY(_controller->core()->schedulerRunning());
}

void TestAppController::southernHemisphereReachesTheMoon()
{
    QSettings().setValue(QStringLiteral("southernHemisphere"), 1);
    start();
    QVERIFY(_controller->moonView()->southernHemisphere());
    _controller->setSouthernHemisphere(false);
    QVERIFY(!_controller->moonView()->southernHemisphere());
}

void TestAppController::forwardedCommandsNeedAnImageView()
{
    start();
    GroupView *sun = _controller->sunView();
    Node *node = _controller->core()->sunGroup()->allNodes().first();
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(node->filePath(), "PNG"));
    sun->outlineShouldSelectItem(node);

    for (int view : {4, 5}) {
        _controller->setGroupView(view);
        QVERIFY(!_controller->selectedGroupView());
        _controller->zoomSelectedNodeData();
        _controller->saveSelectedNodeData();
        QVERIFY(!sun->imageWindowForNode(node));
        QVERIFY(!_controller->window()->findChild<QFileDialog *>());
    }
    _controller->setGroupView(0);
    _controller->zoomSelectedNodeData();
    QVERIFY(sun->imageWindowForNode(node));
    _controller->saveSelectedNodeData();
    auto *panel = _controller->window()->findChild<QFileDialog *>();
    QVERIFY(panel);
    panel->reject();
}

void TestAppController::emptyCacheAsksFirst_data()
{
    QTest::addColumn<bool>("confirm");
    QTest::newRow("Cancel changes nothing") << false;
    QTest::newRow("Empty deletes every data file") << true;
}

void TestAppController::emptyCacheAsksFirst()
{
    QFETCH(bool, confirm);
    start();
    QList<Node *> nodes;
    for (NodeGroup *group : _controller->core()->groupsInViewOrder())
        nodes << group->allNodes().first();
    for (Node *node : nodes) {
        QFile file(node->filePath());
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    QString text;
    QString informative;
    QStringList buttons;
    QTimer::singleShot(0, this, [&] {
        auto *alert = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(alert);
        text = alert->text();
        informative = alert->informativeText();
        for (QAbstractButton *button : alert->buttons())
            buttons << button->text();
        QCOMPARE(alert->defaultButton()->text(), QStringLiteral("Empty"));
        for (QAbstractButton *button : alert->buttons()) {
            if (button->text() == (confirm ? QLatin1String("Empty") : QLatin1String("Cancel")))
                button->click();
        }
    });
    _controller->emptyCache();

    QCOMPARE(text, QStringLiteral("Do you really want to empty the Vantorel cache?"));
    QCOMPARE(informative, QStringLiteral("This will require all data to be reloaded before being "
                                         "viewed, and all current downloads will be stopped."));
    buttons.sort();
    QCOMPARE(buttons, QStringList({"Cancel", "Empty"}));
    for (Node *node : nodes)
        QCOMPARE(node->fileDownloaded(), !confirm);
}

void TestAppController::aboutLinksOpenThenClose()
{
    start();
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &catcher, "open");
    QDesktopServices::setUrlHandler(QStringLiteral("mailto"), &catcher, "open");
    const QList<void (AppController::*)()> actions = {
        &AppController::openAuthorHomePageLink, &AppController::openMailtoLink,
        &AppController::openDonationLink, &AppController::openRelatedSiteOneLink,
        &AppController::openRelatedSiteTwoLink};
    for (auto action : actions) {
        _controller->openAboutBox();
        QVERIFY(_controller->aboutBox()->isVisible());
        (_controller->*action)();
        QVERIFY(!_controller->aboutBox()->isVisible());
    }
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QDesktopServices::unsetUrlHandler(QStringLiteral("mailto"));

    QCOMPARE(catcher.opened.size(), 5);
    QCOMPARE(catcher.opened[1].scheme(), QStringLiteral("mailto"));
    QCOMPARE(QUrlQuery(catcher.opened[1]).queryItemValue(QStringLiteral("subject")),
             QStringLiteral("Vantorel"));
    QCOMPARE(QUrlQuery(catcher.opened[2]).queryItemValue(QStringLiteral("currency_code")),
             QStringLiteral("USD"));
    for (const QUrl &url : catcher.opened)
        QVERIFY(url.isValid());
}

void TestAppController::hiddenViewKeepsWorking()
{
    TestHttpServer server;
    server.serve("/sun.png", TestHttpServer::picture(5000));
    const QString definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    QVERIFY(TestEnvironment::writePropertyList(
        definitions + QStringLiteral("/DataSun.plist"),
        {{"Domain0", QVariantMap{{"DomainName", "Disc"},
                                 {"Node0", TestEnvironment::nodeDict(
                                               QStringLiteral("sun.png"), QStringLiteral("Disc"),
                                               server.baseUrl(), QStringLiteral("sun.png"))}}}}));
    ResourceLocator::setDefinitionsFolder(definitions);
    start();
    _controller->setGroupView(5); // the Moon view on screen, the Sun view hidden

    // A download in the hidden Sun view runs to its end, and its outline row shows the outcome.
    Node *node = _controller->core()->sunGroup()->allNodes().value(0);
    QVERIFY(node);
    _controller->sunView()->group()->addNodeToDownloadQueue(node);
    QTRY_COMPARE(node->itemStatus(), QString(QChar(0x221A)));
    const QAbstractItemModel *outline = _controller->sunView()->domainsList()->model();
    const QModelIndex domain = outline->index(0, 0);
    QCOMPARE(outline->index(0, 1, domain).data().toString(), QString(QChar(0x221A)));
    QVERIFY(QFileInfo(node->filePath()).size() == 5000);
    QCOMPARE(_controller->lastView(), 5);
}

void TestAppController::signalsShutDownInOrder_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("SIGTERM") << int(SIGTERM);
    QTest::newRow("SIGINT") << int(SIGINT);
}

void TestAppController::signalsShutDownInOrder()
{
    QFETCH(int, signalNumber);
    const QString home = TestEnvironment::makeFolder(QStringLiteral("home"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share"));
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));

    QDir().mkpath(home + QStringLiteral("/.config/Vantorel"));
    {
        QSettings seed(home + QStringLiteral("/.config/Vantorel/Vantorel.conf"),
                       QSettings::IniFormat);
        seed.setValue(QStringLiteral("lastView"), 5);
        seed.setValue(QStringLiteral("timeoutSeconds"), 45);
    }

    QProcess app;
    app.setProcessEnvironment(env);
    app.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    app.start(QStringLiteral(VANTOREL_BINARY), {QStringLiteral("--timeout"), QStringLiteral("2")});
    QVERIFY(app.waitForStarted());
    // Let it finish launching before asking it to end.
    QTest::qWait(1500);
    QCOMPARE(app.state(), QProcess::Running);
    ::kill(pid_t(app.processId()), signalNumber);
    QVERIFY(app.waitForFinished(10000));
    QCOMPARE(app.exitStatus(), QProcess::NormalExit);
    QCOMPARE(app.exitCode(), 0);

    QSettings stored(home + QStringLiteral("/.config/Vantorel/Vantorel.conf"),
                     QSettings::IniFormat);
    QCOMPARE(stored.value(QStringLiteral("lastView")).toInt(), 5);
    QCOMPARE(stored.value(QStringLiteral("timeoutSeconds")).toInt(), 45); // --timeout is not kept
    QVERIFY(stored.contains(QStringLiteral("isOnline")));
    QVERIFY(stored.contains(QStringLiteral("MainWindow")));
    QVERIFY(stored.contains(QStringLiteral("ActivityLogWindow")));
    QVERIFY(stored.contains(QStringLiteral("MoonViewSize")));
    QVERIFY(stored.contains(QStringLiteral("lastUpdateForNodeRSGA.txt")));
    QVERIFY(QFileInfo(home + QStringLiteral("/.local/share/Vantorel Data")).isDir());
}

void TestAppController::closingTheWindowQuits()
{
    start();
    connect(qApp, &QCoreApplication::aboutToQuit, _controller,
            &AppController::applicationWillTerminate);
    TestEnvironment::setNow(QDateTime(QDate(2026, 4, 4), QTime(16, 20)));
    Node *node = _controller->core()->earthGroup()->allNodes().first();
    node->setLastUpdateNow();
    _controller->core()->sunGroup()->allNodes().first()->setAutoUpdates(true);

    QTimer::singleShot(0, _controller->window(), &QWidget::close);
    QTimer watchdog;
    watchdog.setSingleShot(true);
    connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(99); });
    watchdog.start(10000);
    QCOMPARE(QApplication::exec(), 0);

    QSettings settings;
    QCOMPARE(settings.value(Node::lastUpdateKey(node->fileName())).toString(),
             QStringLiteral("Saturday, Apr 04 2026 at 04:20 PM"));
    QVERIFY(settings.contains(QStringLiteral("SunViewSize")));
    QVERIFY(settings.contains(QStringLiteral("MainWindow")));
    QCOMPARE(settings.value(QStringLiteral("lastView")).toInt(), 0);
    QVERIFY(!_controller->core()->schedulerRunning());
}

VANTOREL_TEST_MAIN(TestAppController)
#include "test_appcontroller.moc"
