#include "RecordingLog.h"
#include "TestEnvironment.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"

namespace {
QVariantMap node(const QString &dest)
{
    return TestEnvironment::nodeDict(dest);
}
QVariantMap withoutUrl(QVariantMap dict)
{
    dict.remove(u"URL"_s);
    return dict;
}
} // namespace

// Definition files as the loader reads them: probing by index, gaps, extra keys, damaged files
// and bad entries, and where the files are looked up.
class TestDefinitions : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _data = TestEnvironment::makeFolder(u"data"_s);
    }

    // What loads, as "[domain]" followed by its nodes' files, and the reports that must reach the
    // console, naming the entry and the reason. Rows named "Alerts" load the flat Alerts list.
    void probing_data()
    {
        columns<QVariantMap, QStringList, QStringList>("root", "loaded", "reports");
        const auto domain = [](const char *name, const QVariantMap &nodes) {
            QVariantMap dict = nodes;
            if (name)
                dict.insert(u"DomainName"_s, QLatin1String(name));
            return dict;
        };
        QTest::newRow("Node1 only: only index 0 is probed")
            << QVariantMap{{"Domain0", domain("D", {{"Node1", node("b")}})}} << QStringList{"[D]"}
            << QStringList{"Domain0/Node0: missing, a gap in the numbering",
                           "Domain0/Node1: never read, only Node0 is read here"};
        QTest::newRow("no name: one key fewer is probed")
            << QVariantMap{{"Domain0",
                            domain(nullptr, {{"Node0", node("a")}, {"Node1", node("b")}})}}
            << QStringList{"[]", "a"}
            << QStringList{"Domain0/Node1: never read, only Node0 is read here"};
        QTest::newRow("Domain2 lies beyond the probed range")
            << QVariantMap{{"Domain0", domain("A", {{"Node0", node("a")}})},
                           {"Domain2", domain("C", {{"Node0", node("c")}})}}
            << QStringList{"[A]", "a"}
            << QStringList{"Domain1: missing, a gap in the numbering",
                           "Domain2: never read, only Domain0 to Domain1 are read here"};
        QTest::newRow("extra keys widen the probe; file order, not key order")
            << QVariantMap{{"Comment", "x"},
                           {"Domain0",
                            domain("B",
                                   {{"Extra", 1}, {"Node0", node("z")}, {"Node1", node("b")}})},
                           {"Domain1", domain("A", {{"Node0", node("a")}})}}
            << QStringList{"[B]", "z", "b", "[A]", "a"} << QStringList{};
        QTest::newRow("bad entries are skipped, the rest loads")
            << QVariantMap{{"Domain0", "oops"},
                           {"Domain1", domain("D", {{"Node0", node("good1")},
                                                    {"Node1", withoutUrl(node("nourl"))},
                                                    {"Node2", node("../escape")},
                                                    {"Node3", "not a dictionary"},
                                                    {"Node4", node("good2")}})}}
            << QStringList{"[D]", "good1", "good2"}
            << QStringList{"Domain0: not a dictionary", "Domain1/Node1: no \"URL\"",
                           "Domain1/Node2: \"DestFileName\" is not a plain file name",
                           "Domain1/Node3: not a dictionary"};
        QTest::newRow("Alerts: every root entry counts")
            << QVariantMap{{"Node1", node("b")}} << QStringList{}
            << QStringList{"Node0: missing, a gap in the numbering",
                           "Node1: never read, only Node0 is read here"};
    }

    void probing()
    {
        const bool alerts = QByteArray(QTest::currentDataTag()).startsWith("Alerts");
        const QString group = alerts ? u"Alerts"_s : u"Sun"_s;
        TestEnvironment::installDefinitions("Data" + group + ".plist", fetch<QVariantMap>("root"));
        QTest::failOnWarning(QRegularExpression(u"^Cannot allocate resources"_s));
        for (const QString &report : fetch<QStringList>("reports"))
            QTest::ignoreMessage(QtWarningMsg,
                                 qPrintable(QStringLiteral("Cannot allocate resources for new "
                                                           "Node! (group \"%1\", entry %2)")
                                                .arg(group, report)));
        QStringList loaded;
        if (alerts) {
            FlatGroup flat;
            QVERIFY(flat.loadDictionaryData(u"DataAlerts.plist"_s, _data));
            loaded = names(flat.nodes());
        } else {
            DomainGroup sun;
            QVERIFY(sun.loadDomainDataForGroup(group, 0, u"DataSun.plist"_s, _data));
            for (const Domain *d : sun.domains())
                loaded << '[' + d->domainName() + ']' << names(d->nodes());
        }
        QCOMPARE(loaded, fetch<QStringList>("loaded"));
    }

    void unreadableFiles_data()
    {
        columns<QByteArray, QString>("contents", "reason");
        const QString damaged = u"it is not a property list, or a damaged one"_s;
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
        const QString folder = TestEnvironment::makeFolder(u"broken"_s);
        const QString path = folder + u"/DataGraphs.plist"_s;
        if (contents == "<link>")
            QVERIFY(QFile::link(folder + u"/moved.plist"_s, path));
        else
            QVERIFY(TestEnvironment::writeFile(path, contents));

        // The user's own file: the bundled one stands in for it, and the log says why, once.
        ResourceLocator::setDefinitionsFolder(folder);
        RecordingLog log;
        DomainGroup own;
        own.setLog(&log);
        QVERIFY(own.loadDomainDataForGroup(u"Graphs"_s, 1, u"DataGraphs.plist"_s, _data));
        QVERIFY(!own.allNodes().isEmpty());
        QCOMPARE(log.entries,
                 QStringList{QStringLiteral("error: Cannot read the definition file \"%1\": %2. "
                                            "The bundled one is used instead.")
                                 .arg(path, fetch<QString>("reason"))});

        // The bundled file: nothing stands in for it, and the console says so.
        ResourceLocator::setDefinitionsFolder(QString());
        ResourceLocator::setResourceFolder(folder);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Failed to load rootDict!"));
        DomainGroup group;
        QVERIFY(!group.loadDomainDataForGroup(u"Graphs"_s, 1, u"DataGraphs.plist"_s, _data));
        QVERIFY(group.domains().isEmpty());
    }

    // A folder given on the command line first, then the user's own folder, then the bundled file.
    void lookupOrder()
    {
        const auto loaded = [this] {
            FlatGroup group;
            group.loadDictionaryData(u"DataAlerts.plist"_s, _data);
            return group.nodeCount() ? group.nodeAt(0)->fileName() : QString();
        };
        QCOMPARE(loaded(), u"RSGA.txt"_s);
        const QString user = TestEnvironment::home() + u"/.config/Vantorel/Vantorel"_s;
        QDir().mkpath(user);
        QVERIFY(TestEnvironment::writePropertyList(user + u"/DataAlerts.plist"_s,
                                                   {{"Node0", node("user.txt")}}));
        QCOMPARE(loaded(), u"user.txt"_s);
        TestEnvironment::installDefinitions(u"DataAlerts.plist"_s, {{"Node0", node("option.txt")}});
        QCOMPARE(loaded(), u"option.txt"_s);
        QFile::remove(user + u"/DataAlerts.plist"_s);
    }

    void destroyAllNodesStoresLastUpdates()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 2, 2), QTime(14, 15)));
        DomainGroup group;
        group.setGroup(u"Sun"_s, 0, _data);
        group.addNodeToDomain(group.createNewDomain("D"), node("x.png"))->setLastUpdateNow();
        group.destroyAllNodes();
        QCOMPARE(QSettings().value(u"lastUpdateForNodex.png"_s).toString(),
                 u"Monday, Feb 02 2026 at 02:15 PM"_s);
        // The queue is ended: nothing can be queued afterwards.
        group.addNodeToDownloadQueue(group.allNodes().first());
        QVERIFY(group.downloadQueue().isEmpty());
    }

    void outlineModel()
    {
        DomainGroup group;
        group.setGroup(u"Sun"_s, 0, _data);
        Domain *a = group.createNewDomain(u"A"_s);
        group.addNodeToDomain(a, node("a1"));
        Node *n = group.addNodeToDomain(a, node("a2"));
        group.createNewDomain(u"Empty"_s);
        GroupOutlineModel model(&group);
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(model.rowCount(), 2);
        const QModelIndex first = model.index(0, 0);
        QCOMPARE(model.data(first).toString(), u"A"_s);
        QCOMPARE(model.rowCount(first), 2);
        QVERIFY(!model.hasChildren(model.index(1, 0))); // a domain without nodes is not expandable
        QCOMPARE(model.indexForNode(n), model.index(1, 0, first));
        QCOMPARE(model.data(model.indexForNode(n)).toString(), u"a2"_s);
        n->setStatusMessage(u"-"_s, u"-"_s);
        QCOMPARE(model.data(model.index(1, 1, first)).toString(), u"-"_s);
    }

private:
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
