#include "RecordingLog.h"
#include "TestEnvironment.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"

#include <QDir>
#include <QSettings>
#include <QtTest>

// Definition files as the loader reads them: probing by index, gaps, extra keys, both property
// list forms, damaged files and bad entries, and where the files are looked up.
class TestDefinitions : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    }

    void domainProbing_data()
    {
        // The reports name the entries the console must name, with the reason.
        columns<QVariantMap, bool, QStringList, QStringList, QStringList>(
            "root", "binary", "domains", "nodes", "reports");

        const QVariantMap three{
            {"DomainName", "D"}, {"Node0", node("a")}, {"Node1", node("b")}, {"Node2", node("c")}};
        for (const bool binary : {false, true})
            QTest::addRow("name and three nodes, %s", binary ? "binary" : "XML")
                << QVariantMap{{"Domain0", three}} << binary << QStringList{"D"}
                << QStringList{"a", "b", "c"} << QStringList{};
        QTest::newRow("Node1 only: only index 0 is probed")
            << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "D"}, {"Node1", node("b")}}}}
            << false << QStringList{"D"} << QStringList{}
            << QStringList{"Domain0/Node0: missing, a gap in the numbering",
                           "Domain0/Node1: never read, only Node0 is read here"};
        QTest::newRow("no name: one key fewer is probed")
            << QVariantMap{{"Domain0", QVariantMap{{"Node0", node("a")}, {"Node1", node("b")}}}}
            << false << QStringList{""} << QStringList{"a"}
            << QStringList{"Domain0/Node1: never read, only Node0 is read here"};
        QTest::newRow("Domain2 lies beyond the probed range")
            << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "A"}, {"Node0", node("a")}}},
                           {"Domain2", QVariantMap{{"DomainName", "C"}, {"Node0", node("c")}}}}
            << false << QStringList{"A"} << QStringList{"a"}
            << QStringList{"Domain1: missing, a gap in the numbering",
                           "Domain2: never read, only Domain0 to Domain1 are read here"};
        QTest::newRow("extra keys widen the probe; file order, not key order")
            << QVariantMap{{"Comment", "x"},
                           {"Domain0", QVariantMap{{"DomainName", "B"},
                                                   {"Extra", 1},
                                                   {"Node0", node("z")},
                                                   {"Node1", node("b")}}},
                           {"Domain1", QVariantMap{{"DomainName", "A"}, {"Node0", node("a")}}}}
            << false << QStringList{"B", "A"} << QStringList{"z", "b", "a"} << QStringList{};
        QTest::newRow("a domain that is not a dictionary")
            << QVariantMap{{"Domain0", "oops"},
                           {"Domain1", QVariantMap{{"DomainName", "B"}, {"Node0", node("b")}}}}
            << false << QStringList{"B"} << QStringList{"b"}
            << QStringList{"Domain0: not a dictionary"};
        QTest::newRow("a node numbered with a leading zero")
            << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "D"},
                                                   {"Node0", node("a")},
                                                   {"Node01", node("b")}}}}
            << false << QStringList{"D"} << QStringList{"a"}
            << QStringList{"Domain0/Node01: never read, only Node0 to Node1 are read here"};
        QVariantMap noUrl = node("nourl");
        noUrl.remove(QStringLiteral("URL"));
        QTest::newRow("bad entries are skipped, the rest loads")
            << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "D"},
                                                   {"Node0", node("good1")},
                                                   {"Node1", noUrl},
                                                   {"Node2", node("../escape")},
                                                   {"Node3", "not a dictionary"},
                                                   {"Node4", node("good2")}}}}
            << false << QStringList{"D"} << QStringList{"good1", "good2"}
            << QStringList{"Domain0/Node1: no \"URL\"",
                           "Domain0/Node2: \"DestFileName\" is not a plain file name",
                           "Domain0/Node3: not a dictionary"};
    }

    void domainProbing()
    {
        TestEnvironment::installDefinitions(QStringLiteral("DataSun.plist"),
                                            fetch<QVariantMap>("root"), fetch<bool>("binary"));
        expectReports(QStringLiteral("Sun"), fetch<QStringList>("reports"));
        DomainGroup group;
        QVERIFY(group.loadDomainDataForGroup(QStringLiteral("Sun"), 0,
                                             QStringLiteral("DataSun.plist"), _data));
        QStringList domainNames;
        for (const Domain *d : group.domains())
            domainNames << d->domainName();
        QCOMPARE(domainNames, fetch<QStringList>("domains"));
        QCOMPARE(names(group.allNodes()), fetch<QStringList>("nodes"));
    }

    void flatProbing_data()
    {
        columns<QVariantMap, QStringList, QStringList>("root", "nodes", "reports");
        QTest::newRow("Node0 and Node2: index 2 not probed")
            << QVariantMap{{"Node0", node("a")}, {"Node2", node("c")}} << QStringList{"a"}
            << QStringList{"Node1: missing, a gap in the numbering",
                           "Node2: never read, only Node0 to Node1 are read here"};
        QTest::newRow("a gap at the start")
            << QVariantMap{{"Node1", node("b")}} << QStringList{}
            << QStringList{"Node0: missing, a gap in the numbering",
                           "Node1: never read, only Node0 is read here"};
        QTest::newRow("a node that is not a dictionary")
            << QVariantMap{{"Node0", "oops"}, {"Node1", node("b")}} << QStringList{"b"}
            << QStringList{"Node0: not a dictionary"};
        QTest::newRow("empty") << QVariantMap{} << QStringList{} << QStringList{};
    }

    void flatProbing()
    {
        TestEnvironment::installDefinitions(QStringLiteral("DataAlerts.plist"),
                                            fetch<QVariantMap>("root"));
        expectReports(QStringLiteral("Alerts"), fetch<QStringList>("reports"));
        FlatGroup group;
        QVERIFY(group.loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data));
        QCOMPARE(names(group.nodes()), fetch<QStringList>("nodes"));
    }

    void unreadableFiles_data()
    {
        columns<QByteArray, QString>("contents", "reason");
        const QString damaged = QStringLiteral("it is not a property list, or a damaged one");
        QTest::newRow("missing (a link to nothing)") << QByteArray("<link>") << "it is missing";
        QTest::newRow("empty") << QByteArray() << "it is empty";
        QTest::newRow("not a property list") << QByteArray("hello world") << damaged;
        QTest::newRow("truncated XML")
            << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>Domain0") << damaged;
        QTest::newRow("truncated binary") << QByteArray("bplist00\xd1\x01\x02", 11) << damaged;
        QTest::newRow("an array at the root")
            << QByteArray("<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>")
            << "its root is not a dictionary";
    }

    void unreadableFiles()
    {
        const QByteArray contents = fetch<QByteArray>("contents");
        const QString folder = TestEnvironment::makeFolder(QStringLiteral("broken"));
        const QString path = QDir(folder).filePath(QStringLiteral("DataGraphs.plist"));
        if (contents == "<link>")
            QVERIFY(QFile::link(QDir(folder).filePath(QStringLiteral("moved.plist")), path));
        else
            QVERIFY(TestEnvironment::writeFile(path, contents));

        // The user's own file: the bundled one stands in for it, and the log says why, once.
        ResourceLocator::setDefinitionsFolder(folder);
        RecordingLog log;
        DomainGroup own;
        own.setLog(&log);
        QVERIFY(own.loadDomainDataForGroup(QStringLiteral("Graphs"), 1,
                                           QStringLiteral("DataGraphs.plist"), _data));
        QVERIFY(!own.allNodes().isEmpty());
        QCOMPARE(log.entries,
                 QStringList{QStringLiteral("error: Cannot read the definition file \"%1\": %2. "
                                            "The bundled one is used instead.")
                                 .arg(path, fetch<QString>("reason"))});

        // The bundled file: nothing stands in for it, and the console says so.
        ResourceLocator::setDefinitionsFolder(QString());
        ResourceLocator::setResourceFolder(folder);
        const QRegularExpression failed(QStringLiteral("^Failed to load rootDict!"));
        QTest::ignoreMessage(QtWarningMsg, failed);
        DomainGroup group;
        QVERIFY(!group.loadDomainDataForGroup(QStringLiteral("Graphs"), 1,
                                              QStringLiteral("DataGraphs.plist"), _data));
        QVERIFY(group.domains().isEmpty());
        QTest::ignoreMessage(QtWarningMsg, failed);
        FlatGroup flat;
        QVERIFY(!flat.loadDictionaryData(QStringLiteral("DataGraphs.plist"), _data));
        QCOMPARE(flat.nodeCount(), 0);
    }

    void lookupOrder()
    {
        const auto rootWith = [](const QString &dest) {
            return QVariantMap{{"Node0", TestEnvironment::nodeDict(dest)}};
        };
        const auto loaded = [this] {
            FlatGroup group;
            group.loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data);
            return group.nodeCount() ? group.nodeAt(0)->fileName() : QString();
        };
        // The bundled file comes last; the user's configuration folder before it; a folder given
        // on the command line first of all.
        QCOMPARE(loaded(), QStringLiteral("RSGA.txt"));
        const QString user = ResourceLocator::userDefinitionsFolder();
        QVERIFY(user.startsWith(TestEnvironment::home()));
        QDir().mkpath(user);
        QVERIFY(TestEnvironment::writePropertyList(user + QStringLiteral("/DataAlerts.plist"),
                                                   rootWith(QStringLiteral("user.txt"))));
        QCOMPARE(loaded(), QStringLiteral("user.txt"));
        TestEnvironment::installDefinitions(QStringLiteral("DataAlerts.plist"),
                                            rootWith(QStringLiteral("option.txt")));
        QCOMPARE(loaded(), QStringLiteral("option.txt"));
        QFile::remove(user + QStringLiteral("/DataAlerts.plist"));
    }

    void expansionKeys()
    {
        QCOMPARE(DomainGroup::expansionState(QStringLiteral("SDO")), 0);
        DomainGroup::setExpansionState(QStringLiteral("SDO"), 2);
        QCOMPARE(QSettings().value(QStringLiteral("SDO Expanded")).toInt(), 2);
    }

    void destroyAllNodesStoresLastUpdates()
    {
        TestEnvironment::installDefinitions(
            QStringLiteral("DataSun.plist"),
            {{"Domain0", QVariantMap{{"DomainName", "D"}, {"Node0", node("x.png")}}}});
        TestEnvironment::setNow(QDateTime(QDate(2026, 2, 2), QTime(14, 15)));
        DomainGroup group;
        group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                     _data);
        group.allNodes().first()->setLastUpdateNow();
        group.destroyAllNodes();
        QCOMPARE(QSettings().value(QStringLiteral("lastUpdateForNodex.png")).toString(),
                 QStringLiteral("Monday, Feb 02 2026 at 02:15 PM"));
        // The queue is ended: nothing can be queued afterwards.
        group.addNodeToDownloadQueue(group.allNodes().first());
        QVERIFY(group.downloadQueue().isEmpty());
    }

    void flatSelection_data()
    {
        columns<int, int, int>("count", "stored", "selected");
        QTest::newRow("in range") << 3 << 2 << 2;
        QTest::newRow("beyond the list") << 3 << 7 << 0;
        QTest::newRow("negative") << 3 << -4 << 0;
        QTest::newRow("empty list") << 0 << 0 << -1;
    }

    void flatSelection()
    {
        const int selected = fetch<int>("selected");
        FlatGroup group;
        for (int i = 0; i < fetch<int>("count"); ++i)
            group.addNewNodeWithDict(node(QStringLiteral("n%1").arg(i)));
        Node *node = group.selectNodeAtIndex(fetch<int>("stored"));
        QCOMPARE(group.indexOf(node), selected);
        QCOMPARE(group.selectedNode(), node);
        if (selected >= 0)
            QCOMPARE(group.lastAlertMenuIndex(), selected);
        group.refreshDailyWeatherNode(); // with no nodes it must do nothing
    }

    void outlineModel()
    {
        TestEnvironment::installDefinitions(
            QStringLiteral("DataSun.plist"),
            {{"Domain0",
              QVariantMap{{"DomainName", "A"}, {"Node0", node("a1")}, {"Node1", node("a2")}}},
             {"Domain1", QVariantMap{{"DomainName", "Empty"}}}});
        DomainGroup group;
        group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                     _data);
        GroupOutlineModel model(&group);
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(model.rowCount(), 2);
        const QModelIndex a = model.index(0, 0);
        QCOMPARE(model.data(a).toString(), QStringLiteral("A"));
        QCOMPARE(model.rowCount(a), 2);
        QVERIFY(!model.hasChildren(model.index(1, 0))); // a domain without nodes is not expandable
        const QModelIndex a2 = model.index(1, 0, a);
        QCOMPARE(model.data(a2).toString(), QStringLiteral("a2"));
        Node *n = group.allNodes().at(1);
        QCOMPARE(model.indexForNode(n), a2);
        n->setStatusMessage(QStringLiteral("-"), QStringLiteral("-"));
        QCOMPARE(model.data(model.index(1, 1, a)).toString(), QStringLiteral("-"));
    }

private:
    static QVariantMap node(const QString &dest) { return TestEnvironment::nodeDict(dest); }
    // Each report must reach the console, and no other about an entry.
    static void expectReports(const QString &group, const QStringList &reports)
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("^Cannot allocate resources")));
        for (const QString &report : reports)
            QTest::ignoreMessage(QtWarningMsg,
                                 qPrintable(QStringLiteral("Cannot allocate resources for new "
                                                           "Node! (group \"%1\", entry %2)")
                                                .arg(group, report)));
    }
    static QStringList names(const QList<Node *> &nodes)
    {
        QStringList result;
        for (const Node *n : nodes)
            result << n->fileName();
        return result;
    }
    QString _data;
};

VANTOREL_TEST_CORE_MAIN(TestDefinitions)
#include "test_definitions.moc"
