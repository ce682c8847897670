#include "RecordingLog.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/shell/AppCore.h"
#include "core/sources/Node.h"
#include "core/sources/NodeGroup.h"
#include "core/util/Clock.h"

#include <QDeadlineTimer>

constexpr qint64 kTick = 5; // seconds between scheduler ticks

// A simulated week of automatic updates: fifty nodes at mixed rates against a server that fails
// one transfer in ten. The clock jumps from tick to tick, the transfers are real. Every due node
// must be queued at the first tick after it is due, and no node may ever be left in a queue.
class TestLongRun : public QObject {
    Q_OBJECT

private slots:
    void aWeekOfUpdates()
    {
        TestEnvironment::resetState();
        TestHttpServer server;
        server.serve("/item", TestHttpServer::bytes(20000));
        server.setFailEvery(10);

        // Ten nodes per group; the rate indexes are spread so that every rate is present.
        const int rates[] = {0, 1, 2, 3, 3, 4, 4, 5, 6, 7, 3, 2, 4, 5, 5, 6, 6,
                             7, 7, 3, 1, 4, 3, 4, 5, 6, 7, 2, 3, 4, 3, 5, 4, 4,
                             5, 6, 6, 7, 2, 3, 7, 2, 3, 4, 5, 5, 6, 7, 3, 4};
        const QStringList files = TestEnvironment::installGroups(10, server.baseUrl(), u"item"_s);
        QSettings settings;
        for (int i = 0; i < files.size(); ++i) {
            settings.setValue(Node::autoUpdateKey(files[i]), 1);
            settings.setValue(Node::autoUpdateRateKey(files[i]), rates[i % std::size(rates)]);
        }

        const QDateTime start(QDate(2026, 3, 2), QTime(0, 0));
        TestEnvironment::setNow(start);
        AppCore core;
        core.setDataFolderOverride(TestEnvironment::makeFolder(u"data"_s));
        core.prepareDataFolder();
        core.loadAllGroups();
        RecordingLog log;
        core.setLog(&log);

        QList<Node *> nodes;
        for (NodeGroup *group : core.groupsInViewOrder())
            nodes << group->allNodes();
        QCOMPARE(nodes.size(), files.size());

        // When each node was queued, by the clock of the tick that queued it.
        QHash<const Node *, QList<QDateTime>> queued;
        for (NodeGroup *group : core.groupsInViewOrder()) {
            connect(group, &NodeGroup::nodeStatusChanged, this, [&queued](Node *node) {
                if (node->itemStatus() == QLatin1String("-"))
                    queued[node].append(Clock::now());
            });
        }
        const auto queuesEmpty = [&core] {
            for (NodeGroup *group : core.groupsInViewOrder()) {
                if (!group->downloadQueue().isEmpty())
                    return false;
            }
            return true;
        };

        const QDateTime end = start.addDays(7);
        QDateTime now = start;
        while (now <= end) {
            core.schedulerFired();
            // Wait for the transfers without polling, so that a week takes seconds, not hours.
            QDeadlineTimer deadline(30000);
            while (!queuesEmpty() && !deadline.hasExpired())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
            QVERIFY2(queuesEmpty(), qPrintable(u"queues still busy at %1"_s.arg(now.toString())));

            // Ticks at which nothing falls due change nothing; jump to the first one that matters.
            QDateTime nextDue = end.addSecs(kTick);
            for (const Node *node : nodes)
                nextDue = std::min(nextDue, node->nextUpdateDate());
            const qint64 ticksAhead =
                std::max<qint64>(1, (now.secsTo(nextDue) + kTick - 1) / kTick);
            now = now.addSecs(ticksAhead * kTick);
            TestEnvironment::setNow(now);
        }
        for (const Node *node : nodes) {
            const qint64 interval = qint64(node->nextUpdateInMinutes()) * 60;
            const QList<QDateTime> times = queued.value(node);
            QVERIFY2(!times.isEmpty(), qPrintable(node->fileName()));
            // Every attempt, successful or not, moves the last update to the tick it ran at, so the
            // next one is due exactly one interval later and is queued at that very tick.
            QCOMPARE(start.secsTo(times.first()), interval);
            for (qsizetype i = 1; i < times.size(); ++i)
                QCOMPARE(times[i - 1].secsTo(times[i]), interval);
            QCOMPARE(qint64(times.size()), start.secsTo(end) / interval);
        }
        const int failures = int(log.entries.filter(u"error:"_s).size());
        QCOMPARE(failures, server.totalRequests() / 10);
        QVERIFY(failures > 0);
    }
};

VANTOREL_TEST_CORE_MAIN(TestLongRun)
#include "test_longrun.moc"
