#include "RecordingLog.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/Node.h"
#include "core/sources/NodeGroup.h"

#include <QTimer>

// The commands over all five groups, the update timer and the online state.
class TestAppCore : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _core.reset(); // before the server its transfers talk to
        _server = std::make_unique<TestHttpServer>();
        _server->stall("/stall");
        _core = std::make_unique<AppCore>();
        _core->setDataFolderOverride(TestEnvironment::makeFolder(u"data"_s));
        _core->prepareDataFolder();
        _log.entries.clear();
        _core->setLog(&_log);
    }

    void commandOrder_data()
    {
        columns<QString, QString>("command", "order");
        QTest::newRow("update all") << "update"
                                    << "Sun Graphs Aurora Earth Alerts Now";
        QTest::newRow("start-up downloads") << "startup"
                                            << "Sun Aurora Graphs Earth Alerts Now";
        QTest::newRow("scheduled updates") << "scheduled"
                                           << "Sun Aurora Graphs Earth Alerts Now";
    }

    // Each group's first node has the command's flag, the second none: only the first is fetched.
    void commandOrder()
    {
        QFETCH(QString, command);
        load(2, true, command == QLatin1String("scheduled"), command == QLatin1String("startup"));
        TestEnvironment::setNow(QDateTime::currentDateTime().addDays(1));
        if (command == QLatin1String("update"))
            _core->updateAllNodes();
        else if (command == QLatin1String("startup"))
            _core->runStartupDownloads();
        else
            _core->runAllScheduledUpdates();
        QStringList failed;
        for (const QString &entry : _log.entries)
            failed << entry.section(QLatin1Char('"'), 1, 1).chopped(1);
        if (command == QLatin1String("update"))
            failed.removeDuplicates();
        QCOMPARE(failed.join(' '), fetch<QString>("order"));
    }

    void goingOffline()
    {
        const QList<Node *> nodes = load(2, false);
        QSignalSpy online(_core.get(), &AppCore::onlineStateChanged);
        _core->goOnline();
        _core->updateAllNodes();
        const QDateTime when(QDate(2026, 10, 10), QTime(10, 10));
        TestEnvironment::setNow(when);
        _core->goOffline();

        QVERIFY(!_core->isOnline() && !_core->schedulerRunning());
        QCOMPARE(online.count(), 1);
        for (Node *node : nodes) {
            QVERIFY(!node->isDownloading() && node->itemStatus().isEmpty());
            QCOMPARE(node->lastUpdateDate(), when);
        }
        QVERIFY(_log.entries.isEmpty());
    }

    // Offline, ticks and start-up downloads do nothing; going online starts one five-second timer
    // however often it is asked, and repeats no start-up downloads.
    void onlineState()
    {
        load(1, true, true, true);
        TestEnvironment::setNow(QDateTime::currentDateTime().addDays(1));
        Preferences::shared().setOnline(false);
        _core->startScheduler();
        _core->schedulerFired();
        _core->runStartupDownloads();
        QVERIFY(_log.entries.isEmpty());
        _core->goOnline();
        _core->goOnline();
        QTest::qWait(0); // let replaced timers go
        const auto timers = _core->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QCOMPARE(timers.first()->interval(), 5000);
        QVERIFY(_log.entries.isEmpty());
    }

    void staleTemporaryFilesRemoved()
    {
        load(1, true);
        const QDateTime old = QDateTime::currentDateTime().addSecs(-3600);
        const struct {
            const char *name;
            bool old, removed;
        } files[] = {
            {"Alerts0.bin.Ab12Cd", true, true},   // what a killed write leaves
            {"Alerts0.bin.Zz99zz", false, false}, // a write that may still be running
            {"Other.bin.Ab12Cd", true, false},    // not one of our nodes
            {"Alerts0.bin.Ab12Cde", true, false}, // not the temporary pattern
            {"Alerts0.bin", true, false},         // the data file itself
        };
        const QString folder = _core->dataFolderPath() + QLatin1Char('/');
        for (const auto &f : files) {
            QFile file(folder + QLatin1String(f.name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(!f.old || file.setFileTime(old, QFileDevice::FileModificationTime));
        }
        QCOMPARE(_core->removeStaleTemporaryFiles(), 1);
        for (const auto &f : files)
            QCOMPARE(QFileInfo::exists(folder + QLatin1String(f.name)), !f.removed);
    }

private:
    // `count` nodes in every group, at an address that fails at once (ftp) or one that stalls;
    // only the first of each group has the flags.
    QList<Node *> load(int count, bool failing, bool autoUpdates = false, bool startup = false)
    {
        const QStringList files = TestEnvironment::installGroups(
            count, failing ? u"ftp://127.0.0.1/"_s : _server->baseUrl(), u"stall"_s);
        QSettings settings;
        for (int i = 0; i < files.size(); i += count) {
            settings.setValue(Node::autoUpdateKey(files[i]), int(autoUpdates));
            settings.setValue(Node::downloadAtStartupKey(files[i]), int(startup));
        }
        _core->loadAllGroups();
        QList<Node *> nodes;
        for (NodeGroup *group : _core->groupsInViewOrder())
            nodes << group->allNodes();
        return nodes;
    }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<AppCore> _core;
    RecordingLog _log;
};

VANTOREL_TEST_CORE_MAIN(TestAppCore)
#include "test_appcore.moc"
