#include "RecordingLog.h"
#include "TestEnvironment.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"
#include "core/util/SplitLayout.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QtTest>

// Definition files as the loader reads them: probing by index, gaps, extra keys, both property
// list forms, damaged files and bad entries, and where the files are looked up.
class TestDefinitions : public QObject {
    Q_OBJECT

private slots:
    void init();

    void domainProbing_data();
    void domainProbing();
    void flatProbing_data();
    void flatProbing();
    void binaryAndXmlAlike();
    void unreadableFiles_data();
    void unreadableFiles();
    void badEntriesSkipped();
    void domainWithoutName();
    void lookupOrder();
    void expansionKeys();
    void destroyAllNodesStoresLastUpdates();
    void flatSelection_data();
    void flatSelection();
    void outlineModel();
    void splitRestore_data();
    void splitRestore();
    void splitStore();

private:
    // Writes the root to a fresh definitions folder and makes the loader look there first.
    QString install(const QString &fileName, const QVariantMap &root, bool binary = false)
    {
        const QString folder = TestEnvironment::makeFolder(QStringLiteral("definitions"));
        const QString path = QDir(folder).filePath(fileName);
        if (!TestEnvironment::writePropertyList(path, root, binary))
            qFatal("cannot write %s", qPrintable(path));
        ResourceLocator::setDefinitionsFolder(folder);
        return path;
    }
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

void TestDefinitions::init()
{
    TestEnvironment::resetState();
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
}

void TestDefinitions::domainProbing_data()
{
    QTest::addColumn<QVariantMap>("root");
    QTest::addColumn<QStringList>("domains");
    QTest::addColumn<QStringList>("nodes");
    QTest::addColumn<QStringList>("reports"); // entries the console names, with the reason

    const QVariantMap three{
        {"DomainName", "D"}, {"Node0", node("a")}, {"Node1", node("b")}, {"Node2", node("c")}};
    QTest::newRow("name and three nodes") << QVariantMap{{"Domain0", three}} << QStringList{"D"}
                                          << QStringList{"a", "b", "c"} << QStringList{};
    QTest::newRow("Node1 only: only index 0 is probed")
        << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "D"}, {"Node1", node("b")}}}}
        << QStringList{"D"} << QStringList{}
        << QStringList{"Domain0/Node0: missing, a gap in the numbering",
                       "Domain0/Node1: never read, only Node0 is read here"};
    QTest::newRow("Domain2 lies beyond the probed range")
        << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "A"}, {"Node0", node("a")}}},
                       {"Domain2", QVariantMap{{"DomainName", "C"}, {"Node0", node("c")}}}}
        << QStringList{"A"} << QStringList{"a"}
        << QStringList{"Domain1: missing, a gap in the numbering",
                       "Domain2: never read, only Domain0 to Domain1 are read here"};
    QTest::newRow("extra keys widen the probe")
        << QVariantMap{{"Comment", "x"},
                       {"Domain0", QVariantMap{{"DomainName", "A"},
                                               {"Extra", 1},
                                               {"Node0", node("a")},
                                               {"Node1", node("b")}}},
                       {"Domain1", QVariantMap{{"DomainName", "B"}, {"Node0", node("z")}}}}
        << QStringList{"A", "B"} << QStringList{"a", "b", "z"} << QStringList{};
    QTest::newRow("file order, not key order")
        << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "First"}, {"Node0", node("1")}}},
                       {"Domain1", QVariantMap{{"DomainName", "Second"}, {"Node0", node("2")}}}}
        << QStringList{"First", "Second"} << QStringList{"1", "2"} << QStringList{};
    QTest::newRow("a domain that is not a dictionary")
        << QVariantMap{{"Domain0", "oops"},
                       {"Domain1", QVariantMap{{"DomainName", "B"}, {"Node0", node("b")}}}}
        << QStringList{"B"} << QStringList{"b"} << QStringList{"Domain0: not a dictionary"};
    QTest::newRow("a node numbered with a leading zero")
        << QVariantMap{{"Domain0", QVariantMap{{"DomainName", "D"},
                                               {"Node0", node("a")},
                                               {"Node01", node("b")}}}}
        << QStringList{"D"} << QStringList{"a"}
        << QStringList{"Domain0/Node01: never read, only Node0 to Node1 are read here"};
}

void TestDefinitions::domainProbing()
{
    QFETCH(QVariantMap, root);
    QFETCH(QStringList, domains);
    QFETCH(QStringList, nodes);
    QFETCH(QStringList, reports);
    install(QStringLiteral("DataSun.plist"), root);
    expectReports(QStringLiteral("Sun"), reports);
    DomainGroup group;
    QVERIFY(group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                         _data));
    QStringList domainNames;
    for (const Domain *d : group.domains())
        domainNames << d->domainName();
    QCOMPARE(domainNames, domains);
    QCOMPARE(names(group.allNodes()), nodes);
    QCOMPARE(group.groupName(), QStringLiteral("Sun"));
    for (Node *n : group.allNodes())
        QCOMPARE(n->delegate(), static_cast<NodeDelegate *>(&group));
}

void TestDefinitions::flatProbing_data()
{
    QTest::addColumn<QVariantMap>("root");
    QTest::addColumn<QStringList>("nodes");
    QTest::addColumn<QStringList>("reports");
    QTest::newRow("three") << QVariantMap{{"Node0", node("a")},
                                          {"Node1", node("b")},
                                          {"Node2", node("c")}}
                           << QStringList{"a", "b", "c"} << QStringList{};
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

void TestDefinitions::flatProbing()
{
    QFETCH(QVariantMap, root);
    QFETCH(QStringList, nodes);
    QFETCH(QStringList, reports);
    install(QStringLiteral("DataAlerts.plist"), root);
    expectReports(QStringLiteral("Alerts"), reports);
    FlatGroup group;
    QVERIFY(group.loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data));
    QCOMPARE(names(group.nodes()), nodes);
}

void TestDefinitions::binaryAndXmlAlike()
{
    const QVariantMap root{
        {"Domain0", QVariantMap{{"DomainName", "Bin"}, {"Node0", node("b.png")}}}};
    for (bool binary : {false, true}) {
        const QString path = install(QStringLiteral("DataEarth.plist"), root, binary);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.read(6) == "bplist", binary);
        DomainGroup group;
        QVERIFY(group.loadDomainDataForGroup(QStringLiteral("Earth"), 3,
                                             QStringLiteral("DataEarth.plist"), _data));
        QCOMPARE(names(group.allNodes()), QStringList{"b.png"});
    }
}

void TestDefinitions::unreadableFiles_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<bool>("present");
    QTest::addColumn<QString>("reason");
    const QString damaged = QStringLiteral("it is not a property list, or a damaged one");
    QTest::newRow("missing (a link to nothing)") << QByteArray() << false << "it is missing";
    QTest::newRow("empty") << QByteArray() << true << "it is empty";
    QTest::newRow("not a property list") << QByteArray("hello world") << true << damaged;
    QTest::newRow("truncated XML")
        << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>Domain0") << true << damaged;
    QTest::newRow("truncated binary") << QByteArray("bplist00\xd1\x01\x02", 11) << true << damaged;
    QTest::newRow("an array at the root")
        << QByteArray("<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>") << true
        << "its root is not a dictionary";
}

void TestDefinitions::unreadableFiles()
{
    QFETCH(QByteArray, contents);
    QFETCH(bool, present);
    QFETCH(QString, reason);
    const QString folder = TestEnvironment::makeFolder(QStringLiteral("broken"));
    const QString path = QDir(folder).filePath(QStringLiteral("DataGraphs.plist"));
    if (present) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
    } else {
        QVERIFY(QFile::link(QDir(folder).filePath(QStringLiteral("moved.plist")), path));
    }

    // The user's own file: the bundled one stands in for it, and the log says why, once.
    ResourceLocator::setDefinitionsFolder(folder);
    RecordingLog log;
    DomainGroup own;
    own.setLog(&log);
    QVERIFY(own.loadDomainDataForGroup(QStringLiteral("Graphs"), 1,
                                       QStringLiteral("DataGraphs.plist"), _data));
    QVERIFY(!own.allNodes().isEmpty());
    QCOMPARE(log.entries, QStringList{QStringLiteral("error: Cannot read the definition file "
                                                     "\"%1\": %2. The bundled one is used instead.")
                                          .arg(path, reason)});

    // The bundled file: nothing stands in for it, and the console says so.
    ResourceLocator::setDefinitionsFolder(QString());
    ResourceLocator::setResourceFolder(folder);
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^Failed to load rootDict!")));
    DomainGroup group;
    QVERIFY(!group.loadDomainDataForGroup(QStringLiteral("Graphs"), 1,
                                          QStringLiteral("DataGraphs.plist"), _data));
    QVERIFY(group.domains().isEmpty());

    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^Failed to load rootDict!")));
    FlatGroup flat;
    QVERIFY(!flat.loadDictionaryData(QStringLiteral("DataGraphs.plist"), _data));
    QCOMPARE(flat.nodeCount(), 0);
}

void TestDefinitions::badEntriesSkipped()
{
    QVariantMap noUrl = node("nourl.png");
    noUrl.remove(QStringLiteral("URL"));
    const QVariantMap root{{"Domain0", QVariantMap{{"DomainName", "Mixed"},
                                                   {"Node0", node("good1.png")},
                                                   {"Node1", noUrl},
                                                   {"Node2", node("../escape.png")},
                                                   {"Node3", "not a dictionary"},
                                                   {"Node4", node("good2.png")}}}};
    install(QStringLiteral("DataSun.plist"), root);
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral("Cannot allocate resources for new Node!.*"
                                                        "Sun.*Domain0/Node1.*URL")));
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral("Cannot allocate resources for new Node!.*"
                                                        "Sun.*Domain0/Node2.*DestFileName")));
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral("Cannot allocate resources for new Node!.*"
                                                        "Sun.*Domain0/Node3: not a dictionary")));
    DomainGroup group;
    QVERIFY(group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                         _data));
    QCOMPARE(names(group.allNodes()), QStringList({"good1.png", "good2.png"}));
    QVERIFY(!QFileInfo::exists(QDir(_data).filePath(QStringLiteral("../escape.png"))));
}

void TestDefinitions::domainWithoutName()
{
    install(QStringLiteral("DataSun.plist"),
            {{"Domain0", QVariantMap{{"Node0", node("a")}, {"Node1", node("b")}}}});
    DomainGroup group;
    group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"), _data);
    QCOMPARE(group.domains().size(), 1);
    QCOMPARE(group.domains().first()->domainName(), QString());
    // Two entries, so only Node0 is probed.
    QCOMPARE(names(group.allNodes()), QStringList{"a"});
}

void TestDefinitions::lookupOrder()
{
    const auto rootWith = [](const QString &dest) {
        return QVariantMap{{"Node0", TestEnvironment::nodeDict(dest)}};
    };
    const auto loaded = [this] {
        FlatGroup group;
        group.loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data);
        return group.nodeCount() ? group.nodeAt(0)->fileName() : QString();
    };

    // The bundled file comes last.
    QCOMPARE(loaded(), QStringLiteral("RSGA.txt"));

    // The user's configuration folder comes before it.
    const QString user = ResourceLocator::userDefinitionsFolder();
    QVERIFY(user.startsWith(TestEnvironment::home()));
    QDir().mkpath(user);
    QVERIFY(TestEnvironment::writePropertyList(user + QStringLiteral("/DataAlerts.plist"),
                                               rootWith(QStringLiteral("user.txt"))));
    QCOMPARE(loaded(), QStringLiteral("user.txt"));

    // A folder given on the command line comes first of all.
    install(QStringLiteral("DataAlerts.plist"), rootWith(QStringLiteral("option.txt")));
    QCOMPARE(loaded(), QStringLiteral("option.txt"));
    QFile::remove(user + QStringLiteral("/DataAlerts.plist"));
}

void TestDefinitions::expansionKeys()
{
    QCOMPARE(DomainGroup::expansionState(QStringLiteral("SDO")), 0);
    DomainGroup::setExpansionState(QStringLiteral("SDO"), 2);
    QCOMPARE(QSettings().value(QStringLiteral("SDO Expanded")).toInt(), 2);
    QCOMPARE(DomainGroup::expansionState(QStringLiteral("SDO")), 2);
}

void TestDefinitions::destroyAllNodesStoresLastUpdates()
{
    install(QStringLiteral("DataSun.plist"),
            {{"Domain0", QVariantMap{{"DomainName", "D"}, {"Node0", node("x.png")}}}});
    TestEnvironment::setNow(QDateTime(QDate(2026, 2, 2), QTime(14, 15)));
    DomainGroup group;
    group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"), _data);
    group.allNodes().first()->setLastUpdateNow();
    group.destroyAllNodes();
    QCOMPARE(QSettings().value(QStringLiteral("lastUpdateForNodex.png")).toString(),
             QStringLiteral("Monday, Feb 02 2026 at 02:15 PM"));
    // The queue is ended: nothing can be queued afterwards.
    group.addNodeToDownloadQueue(group.allNodes().first());
    QVERIFY(group.downloadQueue().isEmpty());
}

void TestDefinitions::flatSelection_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("selected");
    QTest::newRow("in range") << 3 << 2 << 2;
    QTest::newRow("beyond the list") << 3 << 7 << 0;
    QTest::newRow("negative") << 3 << -4 << 0;
    QTest::newRow("empty list") << 0 << 0 << -1;
}

void TestDefinitions::flatSelection()
{
    QFETCH(int, count);
    QFETCH(int, stored);
    QFETCH(int, selected);
    FlatGroup group;
    for (int i = 0; i < count; ++i)
        group.addNewNodeWithDict(node(QStringLiteral("n%1").arg(i)));
    Node *node = group.selectNodeAtIndex(stored);
    QCOMPARE(group.indexOf(node), selected);
    QCOMPARE(group.selectedNode(), node);
    if (selected >= 0)
        QCOMPARE(group.lastAlertMenuIndex(), selected);
    group.refreshDailyWeatherNode(); // with no nodes it must do nothing
}

void TestDefinitions::outlineModel()
{
    install(QStringLiteral("DataSun.plist"),
            {{"Domain0",
              QVariantMap{{"DomainName", "A"}, {"Node0", node("a1")}, {"Node1", node("a2")}}},
             {"Domain1", QVariantMap{{"DomainName", "Empty"}}}});
    DomainGroup group;
    group.loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"), _data);
    GroupOutlineModel model(&group);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    QCOMPARE(model.rowCount(), 2);
    const QModelIndex a = model.index(0, 0);
    QCOMPARE(model.data(a).toString(), QStringLiteral("A"));
    QCOMPARE(model.data(model.index(0, 1)).toString(), QString());
    QCOMPARE(model.rowCount(a), 2);
    QVERIFY(!model.hasChildren(model.index(1, 0))); // a domain without nodes is not expandable
    const QModelIndex a2 = model.index(1, 0, a);
    QCOMPARE(model.data(a2).toString(), QStringLiteral("a2"));
    QCOMPARE(model.parent(a2), a);

    Node *n = group.allNodes().at(1);
    n->setStatusMessage(QStringLiteral("-"), QStringLiteral("-"));
    QCOMPARE(model.data(model.index(1, 1, a)).toString(), QStringLiteral("-"));
    QCOMPARE(model.indexForNode(n), a2);
    QCOMPARE(GroupOutlineModel::objectValue(n, QStringLiteral("somethingElse")), QVariant());
    QCOMPARE(GroupOutlineModel::columnIdentifier(0), QStringLiteral("itemName"));
    QCOMPARE(GroupOutlineModel::columnIdentifier(1), QStringLiteral("nodeStatus"));
}

void TestDefinitions::splitRestore_data()
{
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<bool>("sideBySide");
    QTest::addColumn<QList<QRect>>("expected");
    const QList<QRect> current{QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)};
    QTest::newRow("three stored, two panes")
        << QStringList{"{{0, 0}, {300, 500}}", "{{304, 0}, {500, 500}}", "{{1, 1}, {1, 1}}"} << true
        << QList<QRect>{QRect(0, 0, 300, 500), QRect(304, 0, 500, 500)};
    QTest::newRow("one stored: only the first pane")
        << QStringList{"{{0, 0}, {250, 500}}"} << true
        << QList<QRect>{QRect(0, 0, 250, 500), current[1]};
    QTest::newRow("zero rect, side by side: no width at its place")
        << QStringList{"{{0, 0}, {250, 500}}", "{{0, 0}, {0, 0}}"} << true
        << QList<QRect>{QRect(0, 0, 250, 500), QRect(204, 0, 0, 500)};
    QTest::newRow("zero rect, stacked: no height") << QStringList{"{{0, 0}, {0, 0}}"} << false
                                                   << QList<QRect>{QRect(0, 0, 200, 0), current[1]};
    QTest::newRow("nothing stored") << QStringList{} << true << current;
}

void TestDefinitions::splitRestore()
{
    QFETCH(QStringList, stored);
    QFETCH(bool, sideBySide);
    QFETCH(QList<QRect>, expected);
    const QList<QRect> current{QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)};
    QCOMPARE(SplitLayout::restoredRects(stored, current, sideBySide), expected);
}

void TestDefinitions::splitStore()
{
    const QStringList stored =
        SplitLayout::storedRects({QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)}, {false, true});
    QCOMPARE(stored, QStringList({"{{0, 0}, {200, 500}}", "{{0, 0}, {0, 0}}"}));
}

VANTOREL_TEST_CORE_MAIN(TestDefinitions)
#include "test_definitions.moc"
