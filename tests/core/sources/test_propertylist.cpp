#include "TestEnvironment.h"

#include "core/sources/DomainGroup.h"
#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"

#include <QDataStream>

using namespace Qt::Literals::StringLiterals;

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

QByteArray xml(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body +
           "</dict></plist>\n";
}

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
    void init() { TestEnvironment::resetState(); }

    // The key and value read back; a file refused has no key.
    void nulCharacters_data()
    {
        columns<QByteArray, QString, QString>("bytes", "key", "value");
        const auto row = [](const char *name, const QByteArray &bytes, const QString &key = {},
                            const QString &value = {}) {
            QTest::newRow(name) << bytes << key << value;
        };
        const QString longText = u"Solar wind speed, plasma é"_s;
        row("XML, NUL byte in a string", xml(bytesOf("<key>a</key><string>x\0y</string>")), "a",
            u"x\0y"_s);
        row("XML, NUL byte in CDATA", xml(bytesOf("<key>a</key><string><![CDATA[x\0y]]></string>")),
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
        // Each of these aborted the program. Loading one as a definition file must now either read
        // it or refuse it with the usual warning, never stop.
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
};

VANTOREL_TEST_CORE_MAIN(TestPropertyList)
#include "test_propertylist.moc"
