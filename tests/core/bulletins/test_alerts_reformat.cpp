#include "TestEnvironment.h"

#include "core/bulletins/BulletinFile.h"
#include "core/bulletins/ReportFormatter.h"

#include <QRegularExpression>

namespace {

enum Kind { Daily, Highlights, Other };

QString transform(int kind, const QString &text)
{
    if (kind == Daily)
        return ReportFormatter::munchDailySpaceWeatherReportFromString(text);
    if (kind == Highlights)
        return ReportFormatter::munchSolarActivityHighlightsFromString(text);
    return ReportFormatter::munchOtherReportsFromString(text);
}

const QString kFixtures = QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins/");

} // namespace

// Bulletins: each transformation's boundary cases, decoding, the choice by file name, and real
// bulletins that must come out without losing any of their content.
class TestAlertsReformat : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void transformations_data()
    {
        columns<int, QString, QString>("kind", "text", "expected");
        const struct {
            Kind kind;
            const char *name, *text, *expected;
        } rows[] = {
            {Daily, "heading after a line break", "x\nIA. a", "x\n\n1A. a"},
            {Daily, "on the first line or inside a line: none", "IA. a\nx IIA. y",
             "IA. a\nx IIA. y"},
            {Daily, "empty line before gives two", "x\n\nIIA. y", "x\n\n\n2A. y"},
            {Daily, "no heading without a full stop, beyond D or IV", "\nIA \nII\nVIIII.\nIE.\nVA.",
             "\nIA \nII\nVIIII.\nIE.\nVA."},
            {Daily, "labels anywhere", "x :Product: Report\n:Issued: 2025",
             "x Report\nIssued: 2025"},
            {Daily, "comment lines", "a\n# one\n#\n#two", "a\none\n\ntwo"},
            {Daily, "comment on the first line stays", "# first\n# second", "# first\nsecond"},
            {Daily, "one hash at a time", "a\n##b\n# # c", "a\n#b\n c"},
            {Daily, "n with tilde is a dash", "5\u00f17", "5-7"},
            {Daily, "CR LF heading", "x\r\nIIIA. y\r\n# c", "x\r\n\n3A. y\r\nc"},

            {Highlights, "header, comment and paragraphs",
             ":Product: Weekly\n:Issued: 2025 Dec\n# Prepared\nLine one\nline two\n\nPara two",
             "Weekly Issued: 2025 Dec\nPrepared Line one line two\n\nPara two"},
            {Highlights, "three line breaks", "a\n\n\nb", "a\n\n b"},
            {Highlights, "four line breaks", "a\n\n\n\nb", "a\n\n\n\nb"},
            {Highlights, "colon lines keep their break", "a\n: b\n:c", "a\nb\nc"},
            {Highlights, "one hash at a time", "a\n##b\n# # c", "a\n#b\n# c"},
            {Highlights, "first line markers stay", "# a\nb", "# a b"},
            {Highlights, "tab and carriage return in the input", "a\tb\rc", "a\nb\n\nc"},
            {Highlights, "CR LF file", "one\r\ntwo\r\nthree", "one\n\n two\n\n three"},
            {Highlights, "n with tilde is a dash", "\n# 15\u00f121", "\n15-21"},

            {Other, "header and comments", ":Product: Forecast\n:Issued: 2025\n# c\n#\nbody",
             "Forecast\nIssued: 2025\nc\n\nbody"},
            {Other, "one hash at a time", "a\n##b\n# # c", "a\n#b\n c"},
            {Other, "headings, breaks, tabs and carriage returns stay",
             "a\nIA. b\tx\r\n# c\n\n\n\nd", "a\nIA. b\tx\r\nc\n\n\n\nd"},
            {Other, "n with tilde is a dash", "\xC3\xB1\xC3\xB1", "--"},
            // Only the precomposed letter: a decomposed one is a real letter of a Unicode file.
            {Other, "decomposed n with tilde stays", "n\xCC\x83", "n\xCC\x83"},
        };
        const char *const kinds[] = {"daily", "highlights", "other"};
        for (const auto &row : rows)
            QTest::addRow("%s: %s", kinds[row.kind], row.name)
                << int(row.kind) << QString::fromUtf8(row.text) << QString::fromUtf8(row.expected);
    }

    void transformations()
    {
        QCOMPARE(transform(fetch<int>("kind"), fetch<QString>("text")), fetch<QString>("expected"));
    }

    void decoding_data()
    {
        columns<QByteArray, QString>("bytes", "expected");
        const char *const rows[][3] = {
            {"0x96 is n with tilde", "15\x96-", "15\u00f1-"},
            {"half a mark is Mac OS Roman", "\xFE", "\xCB\x9B"},
            {"UTF-8 mark is Mac OS Roman", "\xEF\xBB\xBFx", "\xC3\x94\xC2\xAA\xC3\xB8x"},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << QByteArray(row[1]) << QString::fromUtf8(row[2]);
        const QString aDash = QString::fromUtf8("A\xC3\xB1\xE2\x80\x93");
        QTest::newRow("empty") << QByteArray() << "";
        QTest::newRow("UTF-16 big-endian")
            << QByteArray("\xFE\xFF\x00\x41\x00\xF1\x20\x13", 8) << aDash;
        QTest::newRow("UTF-16 little-endian")
            << QByteArray("\xFF\xFE\x41\x00\xF1\x00\x13\x20", 8) << aDash;
    }

    void decoding()
    {
        QCOMPARE(BulletinFile::decode(fetch<QByteArray>("bytes")), fetch<QString>("expected"));
    }

    // Read, decoded and reformatted as the data file name says; one without text is not shown.
    void reportFromFile_data()
    {
        columns<QString, QByteArray, QString>("fileName", "bytes", "shown");
        const QByteArray report(":Product: R\nIA. 1\x96-2");
        QTest::newRow("daily") << "RSGA.txt" << report << "R\n\n1A. 1--2";
        QTest::newRow("highlights") << "WKHF.txt" << report << "R IA. 1--2";
        QTest::newRow("other case") << "rsga.txt" << report << "R\nIA. 1--2";
        QTest::newRow("longer name") << "WKHF.txt.bak" << report << "R\nIA. 1--2";
        QTest::newRow("empty") << "RSGA.txt" << QByteArray() << "<none>";
        QTest::newRow("a mark only") << "RSGA.txt" << QByteArray("\xFE\xFF") << "<none>";
    }

    void reportFromFile()
    {
        const QString path = TestEnvironment::makeFolder(u"reports"_s) + "/data.txt";
        QVERIFY(TestEnvironment::writeFile(path, fetch<QByteArray>("bytes")));
        QCOMPARE(BulletinFile::reportText(path, fetch<QString>("fileName")).value_or("<none>"),
                 fetch<QString>("shown"));
    }

    void realBulletinsKeepTheirContent_data()
    {
        columns<QString, int>("name", "kind");
        const QStringList names = QDir(kFixtures).entryList({u"*.txt"_s}, QDir::Files);
        QVERIFY(names.size() >= 9);
        for (const QString &name : names) {
            for (const int kind : {Daily, Highlights, Other})
                QTest::addRow("%s as %d", qPrintable(name), kind) << name << kind;
        }
    }

    void realBulletinsKeepTheirContent()
    {
        const int kind = fetch<int>("kind");
        const QString input =
            BulletinFile::decode(TestEnvironment::readFile(kFixtures + fetch<QString>("name")));
        QVERIFY(!input.isEmpty());
        const QString output = transform(kind, input);

        // What a transformation may change: the product label, the colons and hashes that mark
        // lines, the blanks and line breaks, and (daily report only) the Roman section numbers at
        // the start of a line, which become Arabic ones. Everything else must still be there, in
        // the same order, and nothing may be added.
        static const QRegularExpression roman(
            u"(?<=\\n)(?:(?:I|II|III|IV)[A-D]|VIII|VII|VI|V|IV|III|II|I)\\."_s);
        static const QRegularExpression arabic(u"(?<=\\n)[1-8][A-D]?\\."_s);
        static const QRegularExpression markers(u"[#:\\s]"_s);
        const auto content = [&](QString text, const QRegularExpression *headings) {
            text.remove(u":Product: "_s);
            if (headings)
                text.remove(*headings);
            return text.remove(markers);
        };
        const bool daily = kind == Daily;
        QCOMPARE(content(output, daily ? &arabic : nullptr),
                 content(input, daily ? &roman : nullptr));
        if (daily)
            QCOMPARE(output.count(arabic), input.count(roman));
        QVERIFY(!output.contains(u":Product:"_s));
        QVERIFY(!output.contains(u"\n#"_s) || kind == Highlights);
    }
};

VANTOREL_TEST_CORE_MAIN(TestAlertsReformat)
#include "test_alerts_reformat.moc"
