#include "RecordingLog.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/Node.h"

// The download queue of a data view and the commands over it: order, no duplicates, one
// transfer at a time, cancelling and logging.
class TestQueue : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _group.reset(); // before the server its transfers talk to
        _server = std::make_unique<TestHttpServer>();
        _server->stall("/stall");
        _group = std::make_unique<DomainGroup>();
        _group->setGroup(u"Sun"_s, 0, TestEnvironment::makeFolder(u"data"_s));
        _group->setLog(&_log);
        _domain = _group->createNewDomain(u"D"_s);
        _log.entries.clear();
    }

    void firstStartsOthersWaitOnce()
    {
        const QList<Node *> n = add("A B C", "stall");
        for (Node *node : n)
            _group->addNodeToDownloadQueue(node);
        QVERIFY(n[0]->isDownloading());
        QCOMPARE(n[0]->itemStatus(), u"."_s);
        QVERIFY(!n[1]->isDownloading());
        QCOMPARE(n[1]->itemStatus() + n[1]->longStatus(), u"--"_s);
        // Queueing again changes nothing: no status, no second transfer, the same order.
        QSignalSpy statuses(_group.get(), &NodeGroup::nodeStatusChanged);
        _group->addNodeToDownloadQueue(n[1]);
        _group->addNodeToDownloadQueue(n[0]);
        QCOMPARE(queue(), u"A B C"_s);
        QCOMPARE(statuses.count(), 0);
        QTest::qWait(100);
        QCOMPARE(_server->requestCount("/stall"), 1);
    }

    void cancelSelected_data()
    {
        columns<int, QString>("selected", "queueAfter");
        QTest::newRow("the waiting one") << 1 << "A";
        QTest::newRow("the running one: the next starts") << 0 << "B";
    }

    void cancelSelected()
    {
        const QList<Node *> n = add("A B C", "stall");
        _group->addNodeToDownloadQueue(n[0]);
        _group->addNodeToDownloadQueue(n[1]);
        _group->setSelectedNode(n[fetch<int>("selected")]);
        _group->cancelSelectedNodeDownload();
        QCOMPARE(queue(), fetch<QString>("queueAfter"));
        QVERIFY(_group->selectedNode()->itemStatus().isEmpty());
        QVERIFY(_group->downloadQueue().first()->isDownloading());
        QVERIFY(_log.entries.isEmpty());
    }

    // One transfer at a time to the end of the queue, each result logged as the preference says.
    void oneAtATimeAndLogging()
    {
        _server->route("/slow", {.chunks = {"x", "y"}, .pauseMs = 50});
        QList<Node *> nodes = add("N0 N1 N2", "slow");
        nodes += add("Bad", "missing"); // last: its failure is reported before its status
        int mostAtOnce = 0;
        // A node still counts as downloading while its success is being reported, and the next one
        // starts from inside that report; transfers on the wire are the ones not yet finished.
        connect(_group.get(), &NodeGroup::nodeStatusChanged, this, [&] {
            const auto running = std::count_if(nodes.cbegin(), nodes.cend(), [](Node *node) {
                return node->isDownloading() && node->itemStatus() != Node::checkMark();
            });
            mostAtOnce = std::max(mostAtOnce, int(running));
        });
        const QStringList expected{
            "message: Download of \"N0\" Successful", "message: Download of \"N1\" Successful",
            "message: Download of \"N2\" Successful",
            "error: Download of \"Bad\" Failed: The server answered 404 Not Found. " +
                _server->url("missing")};
        for (const bool errorsOnly : {false, true}) {
            Preferences::shared().setLogErrorsOnly(errorsOnly);
            _log.entries.clear();
            _group->refreshAllNodeData();
            QTRY_VERIFY(std::none_of(nodes.cbegin(), nodes.cend(),
                                     [](Node *node) { return node->isDownloading(); }));
            QVERIFY(_group->downloadQueue().isEmpty());
            QCOMPARE(mostAtOnce, 1);
            QCOMPARE(_log.entries, errorsOnly ? expected.mid(3) : expected);
        }
    }

    void refreshCommands()
    {
        const QList<Node *> n = add("A B C", "stall");
        Domain *other = _group->createNewDomain(u"Other"_s);
        add("O1 O2", "stall", other);
        _group->refreshSelectedDomainNodes(); // nothing selected
        QVERIFY(_group->downloadQueue().isEmpty());
        _group->setSelectedDomain(other);
        _group->refreshSelectedDomainNodes();
        QCOMPARE(queue(), u"O1 O2"_s);
        // Refreshing everything queues the rest behind, each once.
        _group->addNodeToDownloadQueue(n[2]);
        _group->refreshAllNodeData();
        QCOMPARE(queue(), u"O1 O2 C A B"_s);
    }

    void emptyCache()
    {
        const QList<Node *> n = add("A B", "stall");
        QVERIFY(TestEnvironment::writeFile(n[0]->filePath(), "x"));
        QVERIFY(TestEnvironment::writeFile(n[1]->filePath(), "x"));
        n[1]->setStatusMessage(Node::checkMark(), QString());
        _group->addNodeToDownloadQueue(n[0]);
        _group->emptyGroupCache();
        QVERIFY(_group->downloadQueue().isEmpty() && !n[0]->isDownloading());
        QVERIFY(!n[0]->fileDownloaded() && !n[1]->fileDownloaded());
        QCOMPARE(n[1]->itemStatus(), Node::checkMark()); // statuses are left alone
    }

    // A node without data is fetched when chosen only online and if the preference says so; one
    // already queued counts as fetching whatever the preferences, and is not queued twice.
    void missingData_data()
    {
        columns<bool, bool, bool>("online", "preference", "fetching");
        QTest::newRow("online, preference on") << true << true << true;
        QTest::newRow("offline") << false << true << false;
        QTest::newRow("preference off") << true << false << false;
    }

    void missingData()
    {
        Preferences::shared().setOnline(fetch<bool>("online"));
        Preferences::shared().setDownloadMissingData(fetch<bool>("preference"));
        Node *a = add("A", "stall").first();
        QCOMPARE(_group->queueMissingData(a), fetch<bool>("fetching"));
        QCOMPARE(_group->nodeIsInDownloadQueue(a), fetch<bool>("fetching"));
        _group->addNodeToDownloadQueue(a);
        Preferences::shared().setOnline(false);
        QVERIFY(_group->queueMissingData(a));
        QCOMPARE(_group->downloadQueue().size(), 1);
        _group->cancelAllDownloads();
    }

private:
    // Nodes named by the words of names, all fetching path from the server.
    QList<Node *> add(const char *names, const char *path, Domain *domain = nullptr)
    {
        QList<Node *> nodes;
        for (const QString &name : QString::fromLatin1(names).split(QLatin1Char(' ')))
            nodes << _group->addNodeToDomain(domain ? domain : _domain,
                                             TestEnvironment::nodeDict(name + ".bin", name,
                                                                       _server->baseUrl(),
                                                                       QString::fromLatin1(path)));
        return nodes;
    }

    QString queue() const
    {
        QStringList names;
        for (const Node *node : _group->downloadQueue())
            names << node->itemName();
        return names.join(' ');
    }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<DomainGroup> _group;
    Domain *_domain = nullptr;
    RecordingLog _log;
};

VANTOREL_TEST_CORE_MAIN(TestQueue)
#include "test_queue.moc"
