#include "RecordingLog.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

// The commands over all five groups, the update timer and the online state.
class TestAppCore : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _server = std::make_unique<TestHttpServer>();
        _server->stall("/stall");
        _core = std::make_unique<AppCore>();
        _core->setDataFolderOverride(TestEnvironment::makeFolder(QStringLiteral("data")));
        _core->prepareDataFolder();
        const QStringList names{"Sun", "Graphs", "Aurora", "Earth"};
        QList<DomainGroup *> image{_core->sunGroup(), _core->graphGroup(), _core->auroraGroup(),
                                   _core->earthGroup()};
        for (int i = 0; i < 4; ++i)
            image[i]->setGroup(names[i], i, _core->dataFolderPath());
        // An empty Alerts list, so that the group knows its data folder and holds only test nodes.
        TestEnvironment::installDefinitions(QStringLiteral("Empty.plist"), {});
        QVERIFY(_core->alertsGroup()->loadDictionaryData(QStringLiteral("Empty.plist"),
                                                         _core->dataFolderPath()));
        _log.entries.clear();
        _core->setLog(&_log);
    }

    void cleanup()
    {
        _core.reset();
        _server.reset();
    }

    void commandOrder_data()
    {
        columns<QString, QStringList>("command", "order");
        const QStringList commandOrder{"Sun", "Aurora", "Graphs", "Earth", "Alerts"};
        QTest::newRow("update all")
            << "update" << QStringList{"Sun", "Graphs", "Aurora", "Earth", "Alerts"};
        QTest::newRow("start-up downloads") << "startup" << commandOrder;
        QTest::newRow("scheduled updates") << "scheduled" << commandOrder;
    }

    void commandOrder()
    {
        QFETCH(QString, command);
        addNodes(1, true, command == QLatin1String("scheduled"),
                 command == QLatin1String("startup"));
        if (command != QLatin1String("update"))
            addNodes(1, true); // neither automatic nor at start-up: left out
        TestEnvironment::setNow(QDateTime::currentDateTime().addDays(1));
        if (command == QLatin1String("update"))
            _core->updateAllNodes();
        else if (command == QLatin1String("startup"))
            _core->runStartupDownloads();
        else
            _core->runAllScheduledUpdates();
        QCOMPARE(failedGroups(), fetch<QStringList>("order"));
    }

    void goingOffline()
    {
        const QList<Node *> nodes = addNodes(2, false);
        QSignalSpy online(_core.get(), &AppCore::onlineStateChanged);
        _core->goOnline();
        _core->updateAllNodes();
        QStringList cancelled;
        for (NodeGroup *group : _core->groupsInViewOrder()) {
            connect(group, &NodeGroup::nodeStatusChanged, this, [&cancelled](Node *node) {
                if (node->itemStatus().isEmpty())
                    cancelled << node->itemName();
            });
        }
        const QDateTime when(QDate(2026, 10, 10), QTime(10, 10));
        TestEnvironment::setNow(when);
        _core->goOffline();

        QVERIFY(!_core->isOnline());
        QVERIFY(!Preferences::shared().isOnline());
        QVERIFY(!_core->schedulerRunning());
        QCOMPARE(online.count(), 1);
        // Each group's queued nodes in the order of the cancelling command.
        QCOMPARE(cancelled, QStringList({"Sun0", "Sun1", "Aurora0", "Aurora1", "Graphs0", "Graphs1",
                                         "Earth0", "Earth1", "Alerts0", "Alerts1"}));
        for (Node *node : nodes) {
            QVERIFY(!node->isDownloading());
            QCOMPARE(node->lastUpdateDate(), when);
        }
        for (NodeGroup *group : _core->groupsInViewOrder())
            QVERIFY(group->downloadQueue().isEmpty());
        QVERIFY(_log.entries.isEmpty());
    }

    void onlineToggleStartsOnlyTheTimer()
    {
        addNodes(1, true, false, true);
        Preferences::shared().setOnline(false);
        _core->toggleOnlineStatus();
        QVERIFY(_core->isOnline());
        QVERIFY(_core->schedulerRunning());
        QCOMPARE(_core->scheduler()->interval(), 5000);
        QVERIFY(_log.entries.isEmpty()); // start-up downloads are not repeated
        _core->toggleOnlineStatus();
        QVERIFY(!_core->isOnline());
        QVERIFY(!_core->schedulerRunning());
    }

    void oneTimerAtMost()
    {
        _core->startScheduler();
        _core->goOnline();
        _core->goOnline();
        QTest::qWait(0); // let replaced timers go
        const auto timers = _core->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(
            std::count_if(timers.cbegin(), timers.cend(), [](QTimer *t) { return t->isActive(); }),
            1);
        _core->stopScheduler();
        _core->stopScheduler();
        QVERIFY(!_core->schedulerRunning());
    }

    void offlineTicksDoNothing()
    {
        addNodes(1, true, true, true);
        TestEnvironment::setNow(QDateTime::currentDateTime().addDays(1));
        Preferences::shared().setOnline(false);
        _core->startScheduler();
        _core->schedulerFired();
        _core->runStartupDownloads();
        QVERIFY(_log.entries.isEmpty());
        // Update all is not blocked by the controller itself.
        _core->updateAllNodes();
        QCOMPARE(_log.entries.size(), 5);
    }

    void unfetchableAddressWaitsAnInterval()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 3, 3), QTime(3, 0)));
        addNodes(1, true, true); // every 5 minutes, at an ftp address
        TestEnvironment::advance(5 * 60);
        _core->schedulerFired();
        QCOMPARE(_log.entries.size(), 5);
        // The next tick does not try again: the failed attempt counts as the last update.
        TestEnvironment::advance(5);
        _core->schedulerFired();
        QCOMPARE(_log.entries.size(), 5);
        TestEnvironment::advance(5 * 60);
        _core->schedulerFired();
        QCOMPARE(_log.entries.size(), 10);
    }

    void staleTemporaryFilesRemoved()
    {
        const QString folder = _core->dataFolderPath();
        _core->alertsGroup()->addNewNodeWithDict(
            TestEnvironment::nodeDict(QStringLiteral("RSGA.txt")));
        const QDateTime old = QDateTime::currentDateTime().addSecs(-3600);
        const struct {
            const char *name;
            bool old;
            bool removed;
        } files[] = {
            {"RSGA.txt.Ab12Cd", true, true},   // what a killed write leaves
            {"RSGA.txt.Zz99zz", false, false}, // a write that may still be running
            {"Other.txt.Ab12Cd", true, false}, // not one of our nodes
            {"RSGA.txt.Ab12Cde", true, false}, // not the temporary pattern
            {"RSGA.txt", true, false},         // the data file itself
            {"notes.txt", true, false},
        };
        for (const auto &f : files) {
            QFile file(folder + QLatin1Char('/') + QLatin1String(f.name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            if (f.old)
                QVERIFY(file.setFileTime(old, QFileDevice::FileModificationTime));
        }
        QCOMPARE(_core->removeStaleTemporaryFiles(), 1);
        for (const auto &f : files)
            QCOMPARE(QFileInfo::exists(folder + QLatin1Char('/') + QLatin1String(f.name)),
                     !f.removed);
    }

private:
    // Nodes in every group, named after it and numbered, at an address that fails at once (ftp)
    // or at one that stalls, so that the first downloads and the others wait.
    QList<Node *> addNodes(int count, bool failing, bool autoUpdates = false, bool startup = false)
    {
        QList<Node *> nodes;
        for (NodeGroup *group : _core->groupsInViewOrder()) {
            auto *domains = qobject_cast<DomainGroup *>(group);
            Domain *domain = domains ? domains->createNewDomain(QStringLiteral("D")) : nullptr;
            for (int i = 0; i < count; ++i) {
                const QString name = group->groupName() + QString::number(i);
                const QVariantMap dict = TestEnvironment::nodeDict(
                    name, name, failing ? QStringLiteral("ftp://127.0.0.1/") : _server->baseUrl(),
                    QStringLiteral("stall"));
                Node *node = domains ? domains->addNodeToDomain(domain, dict)
                                     : static_cast<FlatGroup *>(group)->addNewNodeWithDict(dict);
                node->setAutoUpdates(autoUpdates);
                node->setDownloadsAtStartup(startup);
                nodes << node;
            }
        }
        return nodes;
    }

    QStringList failedGroups() const
    {
        QStringList names;
        for (const QString &entry : _log.entries)
            names << entry.section(QLatin1Char('"'), 1, 1).chopped(1);
        return names;
    }

    std::unique_ptr<AppCore> _core;
    std::unique_ptr<TestHttpServer> _server;
    RecordingLog _log;
};

VANTOREL_TEST_CORE_MAIN(TestAppCore)
#include "test_appcore.moc"
