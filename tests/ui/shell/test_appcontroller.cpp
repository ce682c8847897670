#include "../UiFixture.h"
#include "TestHttpServer.h"

#include "core/now/NowHistory.h"
#include "core/now/NowRecorder.h"
#include "core/shell/AppCore.h"
#include "core/sources/Node.h"
#include "core/sources/NodeGroup.h"
#include "ui/shell/AboutBox.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTreeView>

#include <csignal>

// The application's life: start-up, what it restores, the empty-cache question, hidden views at
// work, and the orderly shutdown, both when the main window closes and when the
// process is asked to end by a signal.
class TestAppController : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }
    void cleanup()
    {
        delete _app;
        _app = nullptr;
    }

    void singleInstance()
    {
        _app = AppController::create();
        QCOMPARE(AppController::sharedInstance(), _app);
        QTest::ignoreMessage(QtWarningMsg,
                             "Attempt to allocate more than one AppController object!");
        QVERIFY(!AppController::create());
        QCOMPARE(AppController::sharedInstance(), _app);
    }

    void firstStart()
    {
        QSettings().setValue("southernHemisphere", 1);
        _app = startApplication();
        QCOMPARE(_app->window()->windowTitle(), "Vantorel version 0.1.0");
        QVERIFY(_app->window()->isVisible());
        QCOMPARE(_app->aboutBox()->versionNumberField()->text(), "Version Number 0.1.0");
        QCOMPARE(_app->defaultDescription(),
                 TestEnvironment::readFile(VANTOREL_TEST_RESOURCE_DIR "/DefaultDescription.txt"));
        const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                             "/Vantorel Data";
        // Every group loaded its bundled file, each node pointing into the data folder.
        for (NodeGroup *group : _app->core()->groupsInViewOrder())
            QVERIFY(group->allNodes().value(0)->filePath().startsWith(data + '/'));
        QVERIFY(_app->core()->schedulerRunning());
        QVERIFY(_app->moonView()->southernHemisphere());
    }

    void restoresTheLastView_data()
    {
        columns<int, int>("stored", "shown");
        QTest::newRow("Graphs") << 1 << 1;
        QTest::newRow("Alerts") << 4 << 4;
        QTest::newRow("Moon") << 5 << 5;
        QTest::newRow("Now") << 6 << 6;
        QTest::newRow("7 shows the Sun") << 7 << 0;
        QTest::newRow("-1 shows the Sun") << -1 << 0;
    }

    void restoresTheLastView()
    {
        QFETCH(int, stored);
        QFETCH(int, shown);
        // Only the view on screen is laid out, so only its layout is stored at quit; the others
        // keep what they had: nothing, or the Moon's size, written unlike the view would write it.
        const QStringList layoutKeys = {"SunViewSplitViewRects",    "GraphsViewSplitViewRects",
                                        "AuroraViewSplitViewRects", "EarthViewSplitViewRects",
                                        "AlertsViewSize",           "MoonViewSize"};
        QSettings().setValue("MoonViewSize", "{123,45}");
        QSettings().setValue("lastView", stored);
        _app = startApplication();
        auto *stack = qobject_cast<QStackedWidget *>(_app->window()->centralWidget());
        QCOMPARE(stack->currentIndex(), shown);
        QCOMPARE(_app->selectedGroupView() != nullptr, shown < 4);
        _app->applicationWillTerminate();
        QCOMPARE(QSettings().value("lastView").toInt(), stored); // kept as it was
        for (int view = 0; view < 5; ++view)
            QCOMPARE(QSettings().contains(layoutKeys[view]), view == shown);
        QCOMPARE(QSettings().value("MoonViewSize") == "{123,45}", shown != 5);
    }

    // Each asks first; emptying the cache keeps the history, clearing the history keeps the files.
    void destructiveCommandsAskFirst_data()
    {
        columns<QString, QString, QStringList>("item", "answer", "texts");
        const QStringList empty{"Do you really want to empty the Vantorel cache?",
                                "This will require all data to be reloaded before being viewed, "
                                "and all current downloads will be stopped.",
                                "Empty"};
        const QStringList clear{"Do you really want to clear the history?",
                                "The Now view's charts will lose every value kept from earlier "
                                "downloads and start again from the data files on disk.",
                                "Clear"};
        QTest::newRow("Empty Cache, cancelled") << "Empty Cache…"
                                                << "Cancel" << empty;
        QTest::newRow("Empty Cache") << "Empty Cache…"
                                     << "Empty" << empty;
        QTest::newRow("Clear History, cancelled") << "Clear History…"
                                                  << "Cancel" << clear;
        QTest::newRow("Clear History") << "Clear History…"
                                       << "Clear" << clear;
    }

    void destructiveCommandsAskFirst()
    {
        QFETCH(QString, item);
        QFETCH(QString, answer);
        _app = startApplication();
        QList<Node *> nodes;
        for (NodeGroup *group : _app->core()->groupsInViewOrder()) {
            nodes << group->allNodes().first();
            QVERIFY(TestEnvironment::writeFile(nodes.last()->filePath(), "data"));
        }
        const QString historyPath = NowHistory::pathInFolder(_app->core()->dataFolderPath());
        QCOMPARE(NowHistory(historyPath).merge("kp", {{"kp", 1000, 3.0, {}}}, 2000, 400), 1);
        QSignalSpy cleared(_app->core()->nowRecorder(), &NowRecorder::historyCleared);
        QStringList texts;
        QTimer::singleShot(0, this, [&] {
            auto *alert = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!alert)
                qFatal("No question asked");
            texts << alert->text() << alert->informativeText() << alert->defaultButton()->text();
            button(alert, answer)->click();
        });
        menuItem(_app->window(), "Data", item)->trigger();
        QCOMPARE(texts, fetch<QStringList>("texts"));
        const bool clearing = answer == "Clear";
        QVERIFY(!clearing || cleared.wait(10000));
        for (Node *node : nodes)
            QCOMPARE(node->fileDownloaded(), answer != "Empty");
        QCOMPARE(NowHistory(historyPath).samples("kp", "kp", 0, 5000).size(), clearing ? 0 : 1);
    }

    void hiddenViewKeepsWorking()
    {
        TestHttpServer server;
        server.serve("/sun.png", TestHttpServer::picture(5000));
        const QVariantMap sun =
            TestEnvironment::nodeDict("sun.png", "Disc", server.baseUrl(), "sun.png");
        TestEnvironment::installDefinitions(
            "DataSun.plist", {{"Domain0", QVariantMap{{"DomainName", "Disc"}, {"Node0", sun}}}});
        _app = startApplication();
        _app->setGroupView(5); // the Moon on screen, the Sun hidden
        // A download in the hidden Sun view runs to its end, and its outline row shows it.
        Node *node = _app->core()->sunGroup()->allNodes().value(0);
        _app->core()->sunGroup()->addNodeToDownloadQueue(node);
        QTRY_COMPARE(node->itemStatus(), QString(QChar(0x221A)));
        const QAbstractItemModel *outline = _app->sunView()->findChild<QTreeView *>()->model();
        QCOMPARE(outline->index(0, 1, outline->index(0, 0)).data().toString(), QChar(0x221A));
        QCOMPARE(QFileInfo(node->filePath()).size(), 5000);
    }

    void signalsShutDownInOrder_data()
    {
        columns<int>("signalNumber");
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGINT") << int(SIGINT);
    }

    void signalsShutDownInOrder()
    {
        QFETCH(int, signalNumber);
        const QString home = TestEnvironment::makeFolder("home");
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home);
        env.insert("XDG_CONFIG_HOME", home + "/.config");
        env.insert("XDG_DATA_HOME", home + "/.local/share");
        env.insert("QT_QPA_PLATFORM", "offscreen");
        const QString conf = home + "/.config/Vantorel/Vantorel.conf";
        QSettings(conf, QSettings::IniFormat).setValue("lastView", 5);
        QSettings(conf, QSettings::IniFormat).setValue("timeoutSeconds", 45);
        QProcess app;
        app.setProcessEnvironment(env);
        app.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        app.start(VANTOREL_BINARY, {"--timeout", "2"});
        QVERIFY(app.waitForStarted());
        QTest::qWait(1500); // let it finish launching before asking it to end
        QCOMPARE(app.state(), QProcess::Running);
        ::kill(pid_t(app.processId()), signalNumber);
        QVERIFY(app.waitForFinished(10000));
        QCOMPARE(app.exitStatus(), QProcess::NormalExit);
        QCOMPARE(app.exitCode(), 0);
        QSettings stored(conf, QSettings::IniFormat);
        QCOMPARE(stored.value("lastView").toInt(), 5);
        QCOMPARE(stored.value("timeoutSeconds").toInt(), 45); // --timeout is not kept
        for (const char *key : {"isOnline", "MainWindow", "ActivityLogWindow", "MoonViewSize",
                                "lastUpdateForNodeRSGA.txt"})
            QVERIFY2(stored.contains(key), key);
        QVERIFY(QFileInfo(home + "/.local/share/Vantorel Data").isDir());
    }

    // Last: it runs the application's event loop to its end.
    void closingTheWindowQuits()
    {
        _app = startApplication();
        connect(qApp, &QCoreApplication::aboutToQuit, _app,
                &AppController::applicationWillTerminate);
        TestEnvironment::setNow(QDateTime(QDate(2026, 4, 4), QTime(16, 20)));
        Node *node = _app->core()->earthGroup()->allNodes().first();
        node->setLastUpdateNow();
        QTimer::singleShot(0, _app->window(), &QWidget::close);
        QTimer watchdog;
        connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(99); });
        watchdog.start(10000);
        QCOMPARE(QApplication::exec(), 0);
        QSettings settings;
        QCOMPARE(settings.value(Node::lastUpdateKey(node->fileName())).toString(),
                 "Saturday, Apr 04 2026 at 04:20 PM");
        for (const char *key : {"SunViewSize", "MainWindow", "lastView"})
            QVERIFY2(settings.contains(key), key);
        QVERIFY(!_app->core()->schedulerRunning());
    }

private:
    AppController *_app = nullptr;
};

VANTOREL_TEST_MAIN(TestAppController)
#include "test_appcontroller.moc"
