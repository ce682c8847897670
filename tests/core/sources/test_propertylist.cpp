#include "TestEnvironment.h"

#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QtTest>

namespace {

using Entries = QList<QPair<QString, QString>>;

// A binary property list whose root is one dictionary of strings, every string in UTF-16 (as a
// binary file holds any text that is not plain ASCII). Strings of 15 characters or more take the
// long form, with their length as an integer object of its own.
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

QByteArray xmlDictionary(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body +
           "</dict></plist>\n";
}

const QString kNul(QChar(0));

// The bytes of a literal, NUL characters and all (but not the one that ends it).
template <qsizetype N> QByteArray bytesOf(const char (&literal)[N])
{
    return QByteArray(literal, N - 1);
}

} // namespace

// Property lists with a NUL character in their text. A stray NUL byte in a hand-edited XML file,
// or a U+0000 in a binary file's UTF-16 text, once made the property-list library abort the whole
// program from inside its string getters. Strings are now read by pointer and length; a binary
// file whose UTF-16 text holds a NUL is refused whole, since the library's only way to hand out a
// dictionary key aborts on such a key. The inputs the fuzzers found are replayed as well.
class TestPropertyList : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    }

    void nulCharacters_data()
    {
        columns<QByteArray, bool, QString, QString>("bytes", "readable", "key", "value");

        const QString longText = QStringLiteral("Solar wind speed, plasma");
        QTest::newRow("XML, NUL byte in a string")
            << xmlDictionary(bytesOf("<key>a</key><string>x\0y</string>")) << true << "a"
            << (QStringLiteral("x") + kNul + QStringLiteral("y"));
        QTest::newRow("XML, NUL byte in CDATA")
            << xmlDictionary(bytesOf("<key>a</key><string><![CDATA[x\0y]]></string>")) << true
            << "a" << (QStringLiteral("x") + kNul + QStringLiteral("y"));
        QTest::newRow("binary, UTF-16 text")
            << binaryDictionary({{QStringLiteral("Clé"), QStringLiteral("ñ-y")}}) << true
            << QStringLiteral("Clé") << QStringLiteral("ñ-y");
        QTest::newRow("binary, long UTF-16 text")
            << binaryDictionary({{QStringLiteral("a"), longText + QStringLiteral("é")}}) << true
            << "a" << (longText + QStringLiteral("é"));
        QTest::newRow("binary, NUL in a UTF-16 value")
            << binaryDictionary(
                   {{QStringLiteral("a"), QStringLiteral("é") + kNul + QStringLiteral("y")}})
            << false << QString() << QString();
        QTest::newRow("binary, NUL in a UTF-16 key")
            << binaryDictionary(
                   {{QStringLiteral("é") + kNul + QStringLiteral("b"), QStringLiteral("x")}})
            << false << QString() << QString();
        // Wherever the NUL falls in a long string, whatever the string's place in the file.
        for (const int at : {0, 1, 30, 31, 32, 33, 63, 64, 99}) {
            QString text = QString(100, QLatin1Char('a')) + QStringLiteral("é");
            text[at] = QChar(0);
            QTest::addRow("binary, NUL at %d of 101", at)
                << binaryDictionary(
                       {{QStringLiteral("k"), QStringLiteral("v")}, {QStringLiteral("a"), text}})
                << false << QString() << QString();
        }
        QTest::newRow("binary, NUL at the end of a long UTF-16 value")
            << binaryDictionary({{QStringLiteral("a"), QStringLiteral("b")},
                                 {QStringLiteral("c"), longText + QStringLiteral("é") + kNul}})
            << false << QString() << QString();
    }

    void nulCharacters()
    {
        QFETCH(bool, readable);
        QFETCH(QString, value);

        const std::optional<QVariant> root = PropertyList::fromData(fetch<QByteArray>("bytes"));
        QCOMPARE(root.has_value(), readable);
        if (!readable)
            return;
        QCOMPARE(root->typeId(), int(QMetaType::QVariantMap));
        // What follows a NUL byte in XML text is the library's affair; the text before it and the
        // NUL itself are kept, so that a file name with one is refused rather than cut short.
        const QString actual = root->toMap().value(fetch<QString>("key")).toString();
        QCOMPARE(actual.section(QChar(0), 0, 0), value.section(QChar(0), 0, 0));
        QCOMPARE(actual.contains(QChar(0)), value.contains(QChar(0)));
        if (!value.contains(QChar(0)))
            QCOMPARE(actual, value);
    }

    void definitionWithNulBytes()
    {
        // A NUL byte in a file name refuses that node; one in a title is only text. The rest loads.
        const auto node = [](const QByteArray &dest, const QByteArray &title) {
            return "<dict><key>URL</key><string>http://127.0.0.1/</string>"
                   "<key>SourceFileName</key><string>a.gif</string>"
                   "<key>DestFileName</key><string>" +
                   dest +
                   "</string>"
                   "<key>NodeTitle</key><string>" +
                   title + "</string></dict>";
        };
        const QByteArray file =
            xmlDictionary("<key>Node0</key>" + node(bytesOf("bad\0.txt"), "Bad") +
                          "<key>Node1</key>" + node("good.txt", bytesOf("Good\0")));
        const QString folder = TestEnvironment::makeFolder(QStringLiteral("definitions"));
        QVERIFY(TestEnvironment::writeFile(folder + QStringLiteral("/DataAlerts.plist"), file));
        ResourceLocator::setDefinitionsFolder(folder);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                               "Cannot allocate resources for new Node!.*"
                                               "Node0.*DestFileName")));
        FlatGroup alerts;
        QVERIFY(alerts.loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data));
        QCOMPARE(alerts.nodeCount(), 1);
        QCOMPARE(alerts.nodeAt(0)->fileName(), QStringLiteral("good.txt"));
        QCOMPARE(alerts.nodeAt(0)->nodeTitle(), QStringLiteral("Good") + kNul);
    }

    void fuzzerReproducers_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *target : {"fuzz_plist", "fuzz_definitions"}) {
            const QDir corpus(QStringLiteral(VANTOREL_FUZZ_CORPUS_DIR "/") + QLatin1String(target));
            const QStringList files =
                corpus.entryList({QStringLiteral("regression-*")}, QDir::Files, QDir::Name);
            QVERIFY2(!files.isEmpty(), qPrintable(corpus.path()));
            for (const QString &file : files)
                QTest::newRow(qPrintable(QLatin1String(target) + QLatin1Char('/') + file))
                    << corpus.filePath(file);
        }
    }

    void fuzzerReproducers()
    {
        // Each of these aborted the program. Loading one as a definition file must now either read
        // it or refuse it with the usual warning, never stop.
        QFETCH(QString, path);
        const std::optional<QVariant> root =
            PropertyList::fromData(TestEnvironment::readFile(path));
        const bool dictionary = root && root->typeId() == QMetaType::QVariantMap;

        const QString folder = TestEnvironment::makeFolder(QStringLiteral("reproducer"));
        QVERIFY(QFile::copy(path, QDir(folder).filePath(QStringLiteral("DataSun.plist"))));
        ResourceLocator::setResourceFolder(folder); // as the bundled file, which nothing replaces
        if (!dictionary)
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QStringLiteral("^Failed to load rootDict!")));
        DomainGroup sun;
        QCOMPARE(sun.loadDomainDataForGroup(QStringLiteral("Sun"), 0,
                                            QStringLiteral("DataSun.plist"), _data),
                 dictionary);
    }

private:
    QString _data;
};

VANTOREL_TEST_CORE_MAIN(TestPropertyList)
#include "test_propertylist.moc"
