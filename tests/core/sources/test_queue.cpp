#include "RecordingLog.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

// The download queue of a data view and the commands over it: order, no duplicates, one
// transfer at a time, cancelling, immediate failures, logging, and independence between views.
class TestQueue : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void firstStartsOthersWait();
    void addingAgainChangesNothing();
    void cancelWaitingNode();
    void cancelHeadStartsNext();
    void cancelSelectedChecksTheQueue();
    void failingHeadsStartTheNext();
    void runsOneAtATimeToTheEnd();
    void loggingRule_data();
    void loggingRule();
    void refreshAllQueuesBehind();
    void domainRefresh();
    void cancelAllLeavesOtherViews();
    void emptyCache();
    void scheduledAndStartupSelection();
    void missingData_data();
    void missingData();
    void alertsQueueStatus();

private:
    Node *addNode(const QString &name, const QByteArray &path)
    {
        return _group->addNodeToDomain(
            _domain, TestEnvironment::nodeDict(name + QStringLiteral(".bin"), name,
                                               _server->baseUrl(), QString::fromLatin1(path)));
    }
    Node *addBroken(const QString &name)
    {
        return _group->addNodeToDomain(
            _domain,
            TestEnvironment::nodeDict(name + QStringLiteral(".bin"), name,
                                      QStringLiteral("ftp://127.0.0.1/"), QStringLiteral("x")));
    }
    void stallRoute(const QByteArray &path) { _server->stall(path); }
    QStringList queueNames() const
    {
        QStringList names;
        for (const Node *node : _group->downloadQueue())
            names << node->itemName();
        return names;
    }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<DomainGroup> _group;
    Domain *_domain = nullptr;
    RecordingLog _log;
    QString _data;
};

void TestQueue::init()
{
    TestEnvironment::resetState();
    _server = std::make_unique<TestHttpServer>();
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    _group = std::make_unique<DomainGroup>();
    _group->setGroup(QStringLiteral("Sun"), 0, _data);
    _group->setLog(&_log);
    _domain = _group->createNewDomain(QStringLiteral("D"));
    _log.entries.clear();
    stallRoute("/stall");
    _server->serve("/ok", "data");
}

void TestQueue::cleanup()
{
    _group.reset();
    _server.reset();
}

void TestQueue::firstStartsOthersWait()
{
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    _group->addNodeToDownloadQueue(a);
    QVERIFY(a->isDownloading());
    QCOMPARE(a->itemStatus(), QStringLiteral("."));
    _group->addNodeToDownloadQueue(b);
    QVERIFY(!b->isDownloading());
    QCOMPARE(b->itemStatus(), QStringLiteral("-"));
    QCOMPARE(b->longStatus(), QStringLiteral("-"));
    QVERIFY(_group->nodeIsInDownloadQueue(b));
}

void TestQueue::addingAgainChangesNothing()
{
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    Node *c = addNode(QStringLiteral("C"), "stall");
    for (Node *n : {a, b, c})
        _group->addNodeToDownloadQueue(n);
    QSignalSpy statuses(_group.get(), &NodeGroup::nodeStatusChanged);
    _group->addNodeToDownloadQueue(b);
    _group->addNodeToDownloadQueue(a);
    QCOMPARE(queueNames(), QStringList({"A", "B", "C"}));
    QCOMPARE(statuses.count(), 0);
    QTRY_COMPARE(_server->requestCount("/stall"), 1);
    QTest::qWait(100);
    QCOMPARE(_server->requestCount("/stall"), 1);
}

void TestQueue::cancelWaitingNode()
{
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    _group->addNodeToDownloadQueue(a);
    _group->addNodeToDownloadQueue(b);
    _group->setSelectedNode(b);
    _group->cancelSelectedNodeDownload();
    QCOMPARE(queueNames(), QStringList{"A"});
    QVERIFY(a->isDownloading());
    QCOMPARE(b->itemStatus(), QString());
}

void TestQueue::cancelHeadStartsNext()
{
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "ok");
    _group->addNodeToDownloadQueue(a);
    _group->addNodeToDownloadQueue(b);
    _group->setSelectedNode(a);
    _group->cancelSelectedNodeDownload();
    QVERIFY(!a->isDownloading());
    QVERIFY(b->isDownloading());
    QVERIFY(QTest::qWaitFor([&] { return _group->downloadQueue().isEmpty(); }, 3000));
    QCOMPARE(_log.entries, QStringList{"message: Download of \"B\" Successful"});
}

void TestQueue::cancelSelectedChecksTheQueue()
{
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    Node *c = addNode(QStringLiteral("C"), "stall");
    _group->addNodeToDownloadQueue(a);
    _group->addNodeToDownloadQueue(b);
    // Taking the head out starts nothing: B is now an idle head.
    _group->removeNodeFromDownloadQueue(a);
    a->cancelDownloading();
    QVERIFY(!b->isDownloading());
    _group->setSelectedNode(c); // not queued
    _group->cancelSelectedNodeDownload();
    QVERIFY(b->isDownloading());
}

void TestQueue::failingHeadsStartTheNext()
{
    Node *x = addBroken(QStringLiteral("X"));
    Node *y = addBroken(QStringLiteral("Y"));
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    _group->refreshAllNodeData();
    // X and Y fail inside the calls that queue them; A starts; B waits.
    QCOMPARE(queueNames(), QStringList({"A", "B"}));
    QVERIFY(a->isDownloading());
    QVERIFY(!b->isDownloading());
    QCOMPARE(x->itemStatus(), QStringLiteral("Err"));
    QCOMPARE(y->itemStatus(), QStringLiteral("Err"));
    QCOMPARE(_log.entries.size(), 2);
    QVERIFY(_log.entries[0].startsWith(QStringLiteral("error: Download of \"X\" Failed:")));
    QVERIFY(_log.entries[1].startsWith(QStringLiteral("error: Download of \"Y\" Failed:")));
}

void TestQueue::runsOneAtATimeToTheEnd()
{
    TestHttpServer::Script slow;
    slow.chunks = {"x", "y"};
    slow.pauseMs = 50;
    _server->route("/slow", slow);
    QList<Node *> nodes;
    for (int i = 0; i < 4; ++i)
        nodes << addNode(QStringLiteral("N%1").arg(i), "slow");
    int mostAtOnce = 0;
    // A node still counts as downloading while its success is being reported, and the next one
    // starts from inside that report; transfers on the wire are the ones not yet finished.
    connect(_group.get(), &NodeGroup::nodeStatusChanged, this, [&] {
        const auto running = std::count_if(nodes.cbegin(), nodes.cend(), [](Node *n) {
            return n->isDownloading() && n->itemStatus() != Node::checkMark();
        });
        mostAtOnce = std::max(mostAtOnce, int(running));
    });
    _group->refreshAllNodeData();
    QVERIFY(QTest::qWaitFor([&] { return _group->downloadQueue().isEmpty(); }, 5000));
    QCOMPARE(mostAtOnce, 1);
    QCOMPARE(_log.entries, QStringList({"message: Download of \"N0\" Successful",
                                        "message: Download of \"N1\" Successful",
                                        "message: Download of \"N2\" Successful",
                                        "message: Download of \"N3\" Successful"}));
}

void TestQueue::loggingRule_data()
{
    QTest::addColumn<bool>("errorsOnly");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("everything") << false
                                << QStringList{"message: Download of \"Good\" Successful", "error"};
    QTest::newRow("errors only") << true << QStringList{"error"};
}

void TestQueue::loggingRule()
{
    QFETCH(bool, errorsOnly);
    QFETCH(QStringList, expected);
    Preferences::shared().setLogErrorsOnly(errorsOnly);
    _group->addNodeToDownloadQueue(addNode(QStringLiteral("Good"), "ok"));
    _group->addNodeToDownloadQueue(addNode(QStringLiteral("Bad"), "missing"));
    QVERIFY(QTest::qWaitFor([&] { return _group->downloadQueue().isEmpty(); }, 3000));
    QStringList kinds = _log.entries;
    for (QString &entry : kinds) {
        if (entry.startsWith(QLatin1String("error")))
            entry = QStringLiteral("error");
    }
    QCOMPARE(kinds, expected);
}

void TestQueue::refreshAllQueuesBehind()
{
    Node *a = addNode(QStringLiteral("A"), "stall");
    addNode(QStringLiteral("B"), "stall");
    Node *c = addNode(QStringLiteral("C"), "stall");
    _group->addNodeToDownloadQueue(c);
    _group->addNodeToDownloadQueue(a);
    _group->refreshAllNodeData();
    QCOMPARE(queueNames(), QStringList({"C", "A", "B"}));
}

void TestQueue::domainRefresh()
{
    addNode(QStringLiteral("A"), "stall");
    Domain *other = _group->createNewDomain(QStringLiteral("Other"));
    _group->addNodeToDomain(other,
                            TestEnvironment::nodeDict(QStringLiteral("o1"), QStringLiteral("O1"),
                                                      _server->baseUrl(), QStringLiteral("stall")));
    _group->addNodeToDomain(other,
                            TestEnvironment::nodeDict(QStringLiteral("o2"), QStringLiteral("O2"),
                                                      _server->baseUrl(), QStringLiteral("stall")));
    _group->refreshSelectedDomainNodes(); // nothing selected
    QVERIFY(_group->downloadQueue().isEmpty());
    _group->setSelectedDomain(other);
    _group->refreshSelectedDomainNodes();
    QCOMPARE(queueNames(), QStringList({"O1", "O2"}));
}

void TestQueue::cancelAllLeavesOtherViews()
{
    DomainGroup otherGroup;
    otherGroup.setGroup(QStringLiteral("Earth"), 3, _data);
    Domain *d = otherGroup.createNewDomain(QStringLiteral("E"));
    Node *e = otherGroup.addNodeToDomain(
        d, TestEnvironment::nodeDict(QStringLiteral("e"), QStringLiteral("E"), _server->baseUrl(),
                                     QStringLiteral("stall")));
    otherGroup.addNodeToDownloadQueue(e);
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    _group->refreshAllNodeData();
    TestEnvironment::setNow(QDateTime(QDate(2026, 8, 8), QTime(8, 8)));
    _group->cancelAllDownloads();
    QVERIFY(_group->downloadQueue().isEmpty());
    for (Node *n : {a, b}) {
        QVERIFY(!n->isDownloading());
        QCOMPARE(n->itemStatus(), QString());
        QCOMPARE(n->lastUpdateDate(), QDateTime(QDate(2026, 8, 8), QTime(8, 8)));
    }
    QVERIFY(_log.entries.isEmpty());
    QVERIFY(e->isDownloading());
    e->cancelDownloading();
}

void TestQueue::emptyCache()
{
    for (const char *name : {"A.bin", "B.bin"}) {
        QFile file(QDir(_data).filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    Node *a = addNode(QStringLiteral("A"), "stall");
    Node *b = addNode(QStringLiteral("B"), "stall");
    _group->addNodeToDownloadQueue(a);
    _group->emptyGroupCache();
    QVERIFY(_group->downloadQueue().isEmpty());
    QVERIFY(!a->isDownloading());
    QVERIFY(!a->fileDownloaded());
    QVERIFY(!b->fileDownloaded());
    QCOMPARE(b->itemStatus(), Node::checkMark()); // statuses are left alone
}

void TestQueue::scheduledAndStartupSelection()
{
    TestEnvironment::setNow(QDateTime(QDate(2026, 1, 1), QTime(0, 0)));
    Node *due = addNode(QStringLiteral("Due"), "stall");
    Node *notYet = addNode(QStringLiteral("NotYet"), "stall");
    Node *off = addNode(QStringLiteral("Off"), "stall");
    Node *startup = addNode(QStringLiteral("Startup"), "stall");
    due->setAutoUpdates(true);
    due->setAutoUpdateRate(0); // 5 minutes
    notYet->setAutoUpdates(true);
    notYet->setAutoUpdateRate(3); // an hour
    off->setAutoUpdateRate(0);
    startup->setDownloadsAtStartup(true);
    TestEnvironment::advance(10 * 60);
    _group->runScheduledUpdates();
    QCOMPARE(queueNames(), QStringList{"Due"});
    _group->cancelAllDownloads();
    _group->runStartupDownloads();
    QCOMPARE(queueNames(), QStringList{"Startup"});
    _group->cancelAllDownloads();
}

void TestQueue::missingData_data()
{
    QTest::addColumn<bool>("online");
    QTest::addColumn<bool>("preference");
    QTest::addColumn<bool>("downloading");
    QTest::newRow("online, preference on") << true << true << true;
    QTest::newRow("offline") << false << true << false;
    QTest::newRow("preference off") << true << false << false;
}

void TestQueue::missingData()
{
    QFETCH(bool, online);
    QFETCH(bool, preference);
    QFETCH(bool, downloading);
    Preferences::shared().setOnline(online);
    Preferences::shared().setDownloadMissingData(preference);
    Node *a = addNode(QStringLiteral("A"), "stall");
    QCOMPARE(_group->queueMissingData(a), downloading);
    QCOMPARE(_group->nodeIsInDownloadQueue(a), downloading);
    // Already queued: downloading, whatever the preferences say, and not queued twice.
    _group->addNodeToDownloadQueue(a);
    Preferences::shared().setOnline(false);
    QVERIFY(_group->queueMissingData(a));
    QCOMPARE(_group->downloadQueue().size(), 1);
    _group->cancelAllDownloads();
}

void TestQueue::alertsQueueStatus()
{
    FlatGroup alerts;
    Node *first = alerts.addNewNodeWithDict(
        TestEnvironment::nodeDict(QStringLiteral("RSGA.txt"), QStringLiteral("R"),
                                  _server->baseUrl(), QStringLiteral("stall")));
    Node *second = alerts.addNewNodeWithDict(
        TestEnvironment::nodeDict(QStringLiteral("WKHF.txt"), QStringLiteral("W"),
                                  _server->baseUrl(), QStringLiteral("stall")));
    alerts.selectNodeAtIndex(1);
    alerts.refreshDailyWeatherNode();
    QVERIFY(first->isDownloading());
    alerts.refreshSelectedNodeData();
    QCOMPARE(second->itemStatus(), QStringLiteral("-"));
    QCOMPARE(second->longStatus(), QStringLiteral("Queued..."));
    alerts.cancelAllDownloads();
}

VANTOREL_TEST_CORE_MAIN(TestQueue)
#include "test_queue.moc"
