#include "RecordingLog.h"
#include "TestEnvironment.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"

#include <QDataStream>

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

using Entries = QList<QPair<QString, QString>>;

// A binary property list of one dictionary of strings, all in UTF-16 (as a binary file holds any
// text that is not ASCII); from 15 characters on with the length as an object of its own.
QByteArray binaryDictionary(const Entries &entries)
{
    QByteArray out;
    QDataStream stream(&out, QIODevice::WriteOnly); // big-endian, as the format wants
    stream.writeRawData("bplist00", 8);
    QList<quint16> offsets{8};
    const int count = int(entries.size());
    stream << quint8(0xD0 | count); // keys are objects 1 to count, values the ones after
    for (int i = 1; i <= 2 * count; ++i)
        stream << quint8(i);
    QStringList strings;
    for (const auto &entry : entries)
        strings << entry.first;
    for (const auto &entry : entries)
        strings << entry.second;
    for (const QString &text : strings) {
        offsets << quint16(out.size());
        if (text.size() < 15)
            stream << quint8(0x60 | text.size());
        else
            stream << quint8(0x6F) << quint8(0x11) << quint16(text.size());
        for (const QChar c : text)
            stream << quint16(c.unicode());
    }
    const quint64 table = quint64(out.size());
    for (const quint16 offset : offsets)
        stream << offset;
    stream.writeRawData("\0\0\0\0\0\0\x02\x01", 8); // offsets of 2 bytes, references of 1
    stream << quint64(offsets.size()) << quint64(0) << table;
    return out;
}
} // namespace

// Definition files as the loader reads them: the property lists themselves, probing by index,
// gaps, extra keys, damaged files and bad entries, and where the files are looked up.
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
        const auto names = [](const QList<Node *> &nodes) {
            QStringList names;
            for (const Node *n : nodes)
                names << n->fileName();
            return names;
        };
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

    // A damaged file of the user's own: the bundled one stands in for it, and the log says why,
    // once. (A damaged bundled file is the fuzzer reproducers' case.)
    void unreadableFiles_data()
    {
        columns<QByteArray, QString>("contents", "reason");
        const QString damaged = u"it is not a property list, or a damaged one"_s;
        QTest::newRow("missing (a link to nothing)") << QByteArray("<link>") << "it is missing";
        QTest::newRow("empty") << QByteArray() << "it is empty";
        QTest::newRow("not a property list") << QByteArray("hello world") << damaged;
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

    // A NUL in XML text, or a U+0000 in binary UTF-16 text, once made the property-list library
    // abort the program. Strings are now read by pointer and length; a binary file with such a
    // NUL is refused whole (the library aborts on such a key). A file refused has no key here.
    void nulCharacters_data()
    {
        columns<QByteArray, QString, QString>("bytes", "key", "value");
        const auto row = [](const char *name, const QByteArray &bytes, const QString &key = {},
                            const QString &value = {}) {
            QTest::newRow(name) << bytes << key << value;
        };
        const QString longText = u"Solar wind speed, plasma é"_s;
        row("XML, NUL byte in a string",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><string>x" +
                QByteArray(1, '\0') + "y</string></dict></plist>",
            "a", u"x\0y"_s);
        row("binary, UTF-16 text", binaryDictionary({{u"Clé"_s, u"ñ-y"_s}}), u"Clé"_s, u"ñ-y"_s);
        row("binary, long UTF-16 text", binaryDictionary({{"a", longText}}), "a", longText);
        row("binary, NUL in a UTF-16 value", binaryDictionary({{"a", u"é\0y"_s}}));
        row("binary, NUL in a UTF-16 key", binaryDictionary({{u"é\0b"_s, "x"}}));
        // Wherever the NUL falls in a long string, whatever the string's place in the file.
        for (const int at : {0, 1, 30, 31, 32, 33, 63, 64, 99}) {
            QString text = QString(100, QLatin1Char('a')) + u"é"_s;
            text[at] = QChar(0);
            row(qPrintable(u"binary, NUL at %1 of 101"_s.arg(at)),
                binaryDictionary({{"k", "v"}, {"a", text}}));
        }
    }

    void nulCharacters()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        const std::optional<QVariant> root = PropertyList::fromData(fetch<QByteArray>("bytes"));
        QCOMPARE(root.has_value(), !key.isEmpty());
        if (!root)
            return;
        // What follows a NUL byte in XML text is the library's affair; the text before it and the
        // NUL itself are kept, so that a file name with one is refused rather than cut short.
        const QString actual = root->toMap().value(key).toString();
        QCOMPARE(actual.section(QChar(0), 0, 0), value.section(QChar(0), 0, 0));
        QCOMPARE(actual.contains(QChar(0)), value.contains(QChar(0)));
        if (!value.contains(QChar(0)))
            QCOMPARE(actual, value);
    }

    void fuzzerReproducers_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *target : {"fuzz_plist", "fuzz_definitions"}) {
            const QDir corpus(QStringLiteral(VANTOREL_FUZZ_CORPUS_DIR "/") + QLatin1String(target));
            const QStringList files =
                corpus.entryList({u"regression-*"_s}, QDir::Files, QDir::Name);
            QVERIFY2(!files.isEmpty(), qPrintable(corpus.path()));
            for (const QString &file : files)
                QTest::newRow(qPrintable(QLatin1String(target) + QLatin1Char('/') + file))
                    << corpus.filePath(file);
        }
    }

    void fuzzerReproducers()
    {
        // Each of these aborted the program; now it is read, or refused with the usual warning.
        QFETCH(QString, path);
        const std::optional<QVariant> root =
            PropertyList::fromData(TestEnvironment::readFile(path));
        const bool dictionary = root && root->typeId() == QMetaType::QVariantMap;

        const QString folder = TestEnvironment::makeFolder(u"reproducer"_s);
        QVERIFY(QFile::copy(path, QDir(folder).filePath(u"DataSun.plist"_s)));
        ResourceLocator::setResourceFolder(folder); // as the bundled file, which nothing replaces
        if (!dictionary)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^Failed to load rootDict!"_s));
        DomainGroup sun;
        QCOMPARE(sun.loadDomainDataForGroup(u"Sun"_s, 0, u"DataSun.plist"_s, folder), dictionary);
    }

private:
    QString _data;
};

VANTOREL_TEST_CORE_MAIN(TestDefinitions)
#include "test_definitions.moc"
