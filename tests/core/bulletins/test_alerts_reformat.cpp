#include "TestEnvironment.h"

#include "core/bulletins/BulletinFile.h"
#include "core/bulletins/ReportFormatter.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

// The bulletin transformations and the reading of bulletin files: the replacement semantics, the
// boundary cases of each transformation, the choice by file name, the two encodings, and real
// bulletins that must come out without losing any of their content.
class TestAlertsReformat : public QObject {
    Q_OBJECT

private slots:
    void init();

    void replacementPass_data();
    void replacementPass();
    void dailyReport_data();
    void dailyReport();
    void highlights_data();
    void highlights();
    void otherReports_data();
    void otherReports();
    void chosenByFileName_data();
    void chosenByFileName();
    void decoding_data();
    void decoding();
    void macRomanTableIsComplete();
    void reportFromFile_data();
    void reportFromFile();
    void realBulletinsKeepTheirContent_data();
    void realBulletinsKeepTheirContent();
    void realBulletinsInOtherEncodings_data();
    void realBulletinsInOtherEncodings();

private:
    enum Kind { Daily, Highlights, Other };
    static QString transform(Kind kind, const QString &text)
    {
        switch (kind) {
        case Daily:
            return ReportFormatter::munchDailySpaceWeatherReportFromString(text);
        case Highlights:
            return ReportFormatter::munchSolarActivityHighlightsFromString(text);
        case Other:
            break;
        }
        return ReportFormatter::munchOtherReportsFromString(text);
    }
    static QByteArray fixture(const QString &name)
    {
        QFile file(QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins/") + name);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return file.readAll();
    }
    static QStringList fixtureNames()
    {
        return QDir(QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins"))
            .entryList({QStringLiteral("*.txt")}, QDir::Files, QDir::Name);
    }
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = _folder + QLatin1Char('/') + name;
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return {};
        return path;
    }
    static QByteArray utf16WithMark(const QString &text, bool bigEndian)
    {
        QByteArray bytes = bigEndian ? QByteArray("\xFE\xFF", 2) : QByteArray("\xFF\xFE", 2);
        for (const QChar c : text) {
            const char high = char(c.unicode() >> 8);
            const char low = char(c.unicode() & 0xFF);
            bytes.append(bigEndian ? high : low);
            bytes.append(bigEndian ? low : high);
        }
        return bytes;
    }

    QString _folder;
};

void TestAlertsReformat::init()
{
    TestEnvironment::resetState();
    _folder = TestEnvironment::makeFolder(QStringLiteral("bulletins"));
}

void TestAlertsReformat::replacementPass_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QString>("expected");

    QTest::newRow("every occurrence") << "a-b-c"
                                      << "-"
                                      << "+"
                                      << "a+b+c";
    QTest::newRow("leftmost first, no overlap") << "aaa"
                                                << "aa"
                                                << "b"
                                                << "ba";
    QTest::newRow("back to back") << "aaaa"
                                  << "aa"
                                  << "b"
                                  << "bb";
    QTest::newRow("inserted text not rescanned") << "aab"
                                                 << "ab"
                                                 << "b"
                                                 << "ab";
    QTest::newRow("replacement holds the search") << "xx"
                                                  << "x"
                                                  << "xx"
                                                  << "xxxx";
    QTest::newRow("deletion") << "a:b::c:"
                              << ":"
                              << ""
                              << "abc";
    QTest::newRow("at both ends") << "\nx\n"
                                  << "\n"
                                  << "|"
                                  << "|x|";
    QTest::newRow("nothing found") << "plain"
                                   << "\n#"
                                   << "\n"
                                   << "plain";
    QTest::newRow("empty text") << ""
                                << "\n"
                                << " "
                                << "";
    QTest::newRow("case matters") << "Abc abc"
                                  << "a"
                                  << "_"
                                  << "Abc _bc";
    QTest::newRow("surrogate pairs pass through")
        << QString::fromUtf8("\xF0\x9F\x8C\x9E\xC3\xB1") << QString::fromUtf8("\xC3\xB1") << "-"
        << QString::fromUtf8("\xF0\x9F\x8C\x9E-");
}

void TestAlertsReformat::replacementPass()
{
    QFETCH(QString, text);
    QFETCH(QString, search);
    QFETCH(QString, replacement);
    QFETCH(QString, expected);
    QCOMPARE(ReportFormatter::replaceAll(text, search, replacement), expected);
}

void TestAlertsReformat::dailyReport_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("nothing to replace") << "Solar activity was low."
                                        << "Solar activity was low.";
    QTest::newRow("heading after a line break") << "x\nIA. a"
                                                << "x\n\n1A. a";
    QTest::newRow("heading on the first line stays") << "IA. a\nb"
                                                     << "IA. a\nb";
    QTest::newRow("heading inside a line stays") << "x IIA. y"
                                                 << "x IIA. y";
    QTest::newRow("empty line before gives two") << "x\n\nIIA. y"
                                                 << "x\n\n\n2A. y";
    QTest::newRow("every plain numeral") << "\nI.\nII.\nIII.\nIV.\nV.\nVI.\nVII.\nVIII."
                                         << "\n\n1.\n\n2.\n\n3.\n\n4.\n\n5.\n\n6.\n\n7.\n\n8.";
    QTest::newRow("numerals with letters")
        << "\nIB.\nIC.\nID.\nIIB.\nIIC.\nIID.\nIIIA.\nIIIB.\nIIIC.\nIIID.\nIVA.\nIVB.\nIVC.\nIVD."
        << "\n\n1B.\n\n1C.\n\n1D.\n\n2B.\n\n2C.\n\n2D.\n\n3A.\n\n3B.\n\n3C.\n\n3D.\n\n4A.\n\n4B."
           "\n\n4C.\n\n4D.";
    QTest::newRow("no full stop, no heading") << "\nIA \nII\nVIIII."
                                              << "\nIA \nII\nVIIII.";
    QTest::newRow("letter beyond D") << "\nIE.\nVA."
                                     << "\nIE.\nVA.";
    QTest::newRow("labels anywhere") << "x :Product: Report\n:Issued: 2025"
                                     << "x Report\nIssued: 2025";
    QTest::newRow("label on the first line") << ":Product: Report"
                                             << "Report";
    QTest::newRow("comment lines") << "a\n# one\n#\n#two"
                                   << "a\none\n\ntwo";
    QTest::newRow("comment on the first line stays") << "# first\n# second"
                                                     << "# first\nsecond";
    QTest::newRow("double hash loses one") << "a\n##b"
                                           << "a\n#b";
    QTest::newRow("two markers in a row") << "a\n# # b"
                                          << "a\n b";
    QTest::newRow("n with tilde is a dash") << QString::fromUtf8("5\xC3\xB1"
                                                                 "7")
                                            << "5-7";
    QTest::newRow("tabs and carriage returns stay") << "a\tb\rc"
                                                    << "a\tb\rc";
    QTest::newRow("CR LF heading") << "x\r\nIIIA. y\r\n# c"
                                   << "x\r\n\n3A. y\r\nc";
}

void TestAlertsReformat::dailyReport()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(transform(Daily, text), expected);
}

void TestAlertsReformat::highlights_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("nothing to replace") << "one line only"
                                        << "one line only";
    QTest::newRow("header, comment and paragraphs")
        << ":Product: Weekly\n:Issued: 2025 Dec\n# Prepared\nLine one\nline two\n\nPara two"
        << "Weekly Issued: 2025 Dec\nPrepared Line one line two\n\nPara two";
    QTest::newRow("lines of one paragraph join") << "a\nb\nc"
                                                 << "a b c";
    QTest::newRow("three line breaks") << "a\n\n\nb"
                                       << "a\n\n b";
    QTest::newRow("four line breaks") << "a\n\n\n\nb"
                                      << "a\n\n\n\nb";
    QTest::newRow("colon lines keep their break") << "a\n: b\n:c"
                                                  << "a\nb\nc";
    QTest::newRow("hash lines keep their break") << "a\n# b\n#c"
                                                 << "a\nb\nc";
    QTest::newRow("double hash loses one") << "a\n##b"
                                           << "a\n#b";
    QTest::newRow("two markers in a row") << "a\n# # b"
                                          << "a\n# b";
    QTest::newRow("first line markers stay") << "# a\nb"
                                             << "# a b";
    QTest::newRow("issue line joins the line before") << "Title\n:Issued: now"
                                                      << "Title Issued: now";
    QTest::newRow("tab in the input") << "a\tb"
                                      << "a\nb";
    QTest::newRow("carriage return in the input") << "a\rb"
                                                  << "a\n\nb";
    QTest::newRow("CR LF file") << "one\r\ntwo\r\nthree"
                                << "one\n\n two\n\n three";
    QTest::newRow("n with tilde is a dash") << QString::fromUtf8("\n# 15\xC3\xB1"
                                                                 "21")
                                            << "\n15-21";
}

void TestAlertsReformat::highlights()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(transform(Highlights, text), expected);
}

void TestAlertsReformat::otherReports_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("nothing to replace") << "Solar flux 124"
                                        << "Solar flux 124";
    QTest::newRow("header and comments") << ":Product: Forecast\n:Issued: 2025\n# c\n#\nbody"
                                         << "Forecast\nIssued: 2025\nc\n\nbody";
    QTest::newRow("label inside a line") << "x :Product: y"
                                         << "x y";
    QTest::newRow("comment on the first line stays") << "#x\n#y"
                                                     << "#x\ny";
    QTest::newRow("double hash loses one") << "a\n##b"
                                           << "a\n#b";
    QTest::newRow("two markers in a row") << "a\n# # b"
                                          << "a\n b";
    QTest::newRow("headings untouched") << "a\nIA. b\nII. c"
                                        << "a\nIA. b\nII. c";
    QTest::newRow("line breaks untouched") << "a\n\n\n\nb"
                                           << "a\n\n\n\nb";
    QTest::newRow("tabs and carriage returns stay") << "a\tb\r\n# c"
                                                    << "a\tb\r\nc";
    QTest::newRow("n with tilde is a dash") << QString::fromUtf8("\xC3\xB1\xC3\xB1") << "--";
    // Only the precomposed letter: a decomposed one is a real letter of a Unicode file.
    QTest::newRow("decomposed n with tilde stays")
        << QString::fromUtf8("n\xCC\x83") << QString::fromUtf8("n\xCC\x83");
}

void TestAlertsReformat::otherReports()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(transform(Other, text), expected);
}

void TestAlertsReformat::chosenByFileName_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<int>("kind");

    QTest::newRow("daily") << "RSGA.txt" << int(Daily);
    QTest::newRow("highlights") << "WKHF.txt" << int(Highlights);
    QTest::newRow("daily, other case") << "rsga.txt" << int(Other);
    QTest::newRow("highlights, other case") << "WKHF.TXT" << int(Other);
    QTest::newRow("longer name") << "RSGA.txt.bak" << int(Other);
    QTest::newRow("any other") << "3DayForecast.txt" << int(Other);
    QTest::newRow("no name") << "" << int(Other);
}

void TestAlertsReformat::chosenByFileName()
{
    QFETCH(QString, fileName);
    QFETCH(int, kind);
    // Each transformation treats this text differently from the other two.
    const QString probe = QStringLiteral("a\nIA. b\nc");
    QCOMPARE(ReportFormatter::reformat(probe, fileName), transform(Kind(kind), probe));
}

void TestAlertsReformat::decoding_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");

    QTest::newRow("ASCII") << QByteArray("Kp 5\n") << "Kp 5\n";
    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("0x96 is n with tilde") << QByteArray("15\x96"
                                                        "21")
                                          << QString::fromUtf8("15\xC3\xB1"
                                                               "21");
    QTest::newRow("first high byte") << QByteArray("\x80") << QString::fromUtf8("\xC3\x84");
    QTest::newRow("bullet") << QByteArray("\xA5") << QString::fromUtf8("\xE2\x80\xA2");
    QTest::newRow("en dash") << QByteArray("\xD0") << QString::fromUtf8("\xE2\x80\x93");
    QTest::newRow("euro") << QByteArray("\xDB") << QString::fromUtf8("\xE2\x82\xAC");
    QTest::newRow("no-break space") << QByteArray("\xCA") << QString(QChar(0x00A0));
    QTest::newRow("Apple logo") << QByteArray("\xF0") << QString(QChar(0xF8FF));
    QTest::newRow("last high byte") << QByteArray("\xFF") << QString::fromUtf8("\xCB\x87");
    QTest::newRow("UTF-16 big-endian") << QByteArray("\xFE\xFF\x00\x41\x00\xF1\x20\x13", 8)
                                       << QString::fromUtf8("A\xC3\xB1\xE2\x80\x93");
    QTest::newRow("UTF-16 little-endian") << QByteArray("\xFF\xFE\x41\x00\xF1\x00\x13\x20", 8)
                                          << QString::fromUtf8("A\xC3\xB1\xE2\x80\x93");
    QTest::newRow("mark only") << QByteArray("\xFF\xFE") << "";
    QTest::newRow("second mark is text")
        << QByteArray("\xFF\xFE\xFF\xFE\x41\x00", 6) << QString(QChar(0xFEFF)) + QLatin1Char('A');
    QTest::newRow("odd last byte") << QByteArray("\xFE\xFF\x00\x41\x00", 5)
                                   << QStringLiteral("A") + QChar(QChar::ReplacementCharacter);
    QTest::newRow("half a mark is Mac OS Roman")
        << QByteArray("\xFE") << QString::fromUtf8("\xCB\x9B");
    QTest::newRow("UTF-8 mark is Mac OS Roman")
        << QByteArray("\xEF\xBB\xBFx") << QString::fromUtf8("\xC3\x94\xC2\xAA\xC3\xB8x");
}

void TestAlertsReformat::decoding()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    QCOMPARE(BulletinFile::decode(bytes), expected);
}

void TestAlertsReformat::macRomanTableIsComplete()
{
    // Every high byte stands for a character of its own outside ASCII: no hole, no duplicate.
    QSet<QChar> seen;
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        const QChar c = BulletinFile::macRomanCharacter((unsigned char)byte);
        QVERIFY2(c.unicode() >= 0xA0, qPrintable(QString::number(byte, 16)));
        seen.insert(c);
    }
    QCOMPARE(seen.size(), 128);
    for (int byte = 0; byte < 0x80; ++byte)
        QCOMPARE(BulletinFile::macRomanCharacter((unsigned char)byte).unicode(), char16_t(byte));
}

void TestAlertsReformat::reportFromFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("shown");
    QTest::addColumn<QString>("expected");

    QTest::newRow("dash byte of a daily report") << QByteArray(":Product: R\n:Issued: d\nIA. 1\x96"
                                                               "2")
                                                 << "RSGA.txt" << true << "R\nIssued: d\n\n1A. 1-2";
    QTest::newRow("UTF-16 highlights")
        << utf16WithMark(QStringLiteral("a\nb\n\nc"), false) << "WKHF.txt" << true << "a b\n\nc";
    QTest::newRow("CR LF other report shown with plain line breaks")
        << QByteArray("a\r\n# b\r\nc\rd") << "wwv.txt" << true << "a\nb\nc\nd";
    QTest::newRow("zero bytes") << QByteArray() << "RSGA.txt" << false << "";
    QTest::newRow("byte-order mark only") << QByteArray("\xFE\xFF") << "x.txt" << false << "";
}

void TestAlertsReformat::reportFromFile()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, fileName);
    QFETCH(bool, shown);
    QFETCH(QString, expected);
    const QString path = write(QStringLiteral("data.txt"), bytes);
    QVERIFY(!path.isEmpty());
    const std::optional<QString> report = BulletinFile::reportText(path, fileName);
    QCOMPARE(report.has_value(), shown);
    if (shown)
        QCOMPARE(*report, expected);
}

void TestAlertsReformat::realBulletinsKeepTheirContent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("kind");
    const QStringList names = fixtureNames();
    QVERIFY(names.size() >= 9);
    for (const QString &name : names) {
        for (const auto &[kind, label] :
             {std::pair{Daily, "daily"}, {Highlights, "highlights"}, {Other, "other"}}) {
            QTest::addRow("%s as %s", qPrintable(name), label) << name << int(kind);
        }
    }
}

void TestAlertsReformat::realBulletinsKeepTheirContent()
{
    QFETCH(QString, name);
    QFETCH(int, kind);
    const QString input = BulletinFile::decode(fixture(name));
    QVERIFY(!input.isEmpty());
    const QString output = transform(Kind(kind), input);

    // What a transformation may change: the product label, the colons and hashes that mark
    // lines, the blanks and line breaks, and (daily report only) the Roman section numbers at
    // the start of a line, which become Arabic ones. Everything else must still be there, in
    // the same order, and nothing may be added.
    static const QRegularExpression roman(
        QStringLiteral("(?<=\\n)(?:(?:I|II|III|IV)[A-D]|VIII|VII|VI|V|IV|III|II|I)\\."));
    static const QRegularExpression arabic(QStringLiteral("(?<=\\n)[1-8][A-D]?\\."));
    static const QRegularExpression markers(QStringLiteral("[#:\\s]"));
    const auto content = [&](QString text, const QRegularExpression *headings) {
        text.remove(QStringLiteral(":Product: "));
        if (headings)
            text.remove(*headings);
        return text.remove(markers);
    };
    const bool daily = kind == Daily;
    QCOMPARE(content(output, daily ? &arabic : nullptr), content(input, daily ? &roman : nullptr));
    if (daily)
        QCOMPARE(output.count(arabic), input.count(roman));
    QVERIFY(!output.contains(QStringLiteral(":Product:")));
    QVERIFY(!output.contains(QStringLiteral("\n#")) || kind == Highlights);
}

void TestAlertsReformat::realBulletinsInOtherEncodings_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("dataFileName");
    for (const QString &name : fixtureNames()) {
        const QString dataFileName = name.startsWith(QLatin1String("rsga"))   ? "RSGA.txt"
                                     : name.startsWith(QLatin1String("wkhf")) ? "WKHF.txt"
                                                                              : "other.txt";
        QTest::newRow(qPrintable(name)) << name << dataFileName;
    }
}

void TestAlertsReformat::realBulletinsInOtherEncodings()
{
    QFETCH(QString, name);
    QFETCH(QString, dataFileName);
    const QByteArray bytes = fixture(name);
    const QString text = QString::fromLatin1(bytes);
    const std::optional<QString> plain = BulletinFile::reportText(write(name, bytes), dataFileName);
    QVERIFY(plain);

    // The same bulletin as UTF-16, either byte order, reads the same.
    for (const bool bigEndian : {true, false}) {
        const QString path = write(QStringLiteral("utf16-") + name, utf16WithMark(text, bigEndian));
        QCOMPARE(BulletinFile::reportText(path, dataFileName), plain);
    }

    // With CR LF line ends it shows the same lines, except the highlights, whose carriage
    // returns become paragraph breaks: every line is then a paragraph of its own.
    QByteArray crlf = bytes;
    crlf.replace("\n", "\r\n");
    const std::optional<QString> fromCrlf =
        BulletinFile::reportText(write(QStringLiteral("crlf-") + name, crlf), dataFileName);
    QVERIFY(fromCrlf);
    if (dataFileName != QLatin1String("WKHF.txt")) {
        QCOMPARE(*fromCrlf, *plain);
    } else {
        QVERIFY(!fromCrlf->contains(QLatin1Char('\r')));
        QVERIFY(fromCrlf->count(QStringLiteral("\n\n")) > plain->count(QStringLiteral("\n\n")));
    }

    // A dash written as Mac OS Roman 0x96 shows as "-".
    QByteArray dashed = bytes;
    dashed.replace(" - ", " \x96 ");
    QCOMPARE(BulletinFile::reportText(write(QStringLiteral("dash-") + name, dashed), dataFileName),
             plain);
}

VANTOREL_TEST_CORE_MAIN(TestAlertsReformat)
#include "test_alerts_reformat.moc"
