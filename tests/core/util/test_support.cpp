#include "TestEnvironment.h"

#include "core/log/LogEntry.h"
#include "core/sources/UpdateTimeText.h"
#include "core/util/CalendarFormat.h"
#include "core/util/GeometryText.h"

#include <QLocale>
#include <QtTest>

class TestSupport : public QObject {
    Q_OBJECT

private slots:
    void calendarFormat_data();
    void calendarFormat();
    void englishNamesWhateverTheLocale();
    void logEntry_data();
    void logEntry();
    void updateTimeTextRoundTrip_data();
    void updateTimeTextRoundTrip();
    void updateTimeTextRejects_data();
    void updateTimeTextRejects();
    void sizeText_data();
    void sizeText();
    void rectText_data();
    void rectText();
};

void TestSupport::calendarFormat_data()
{
    QTest::addColumn<QDateTime>("when");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("expected");

    const QDateTime evening(QDate(2026, 11, 16), QTime(17, 57, 9));
    const QDateTime midnight(QDate(2006, 3, 4), QTime(0, 5));
    const QDateTime noon(QDate(2006, 3, 14), QTime(12, 0));
    QTest::newRow("long last update") << evening << "%A, %b %d %Y at %I:%M %p"
                                      << "Monday, Nov 16 2026 at 05:57 PM";
    QTest::newRow("long next update") << evening << "%m/%d at %I:%M %p"
                                      << "11/16 at 05:57 PM";
    QTest::newRow("short") << evening << "%m/%d @ %I:%M%p"
                           << "11/16 @ 05:57PM";
    QTest::newRow("log stamp, midnight is 12 AM") << midnight << "%Y/%m/%d %I:%M%p"
                                                  << "2006/03/04 12:05AM";
    QTest::newRow("noon is 12 PM") << noon << "%I:%M %p"
                                   << "12:00 PM";
    QTest::newRow("moon date") << midnight << "%B %d, %Y %I:%M %p"
                               << "March 04, 2006 12:05 AM";
    QTest::newRow("seconds, day of year, 24 h") << evening << "%H:%M:%S %j"
                                                << "17:57:09 320";
    QTest::newRow("percent and unknown") << evening << "100%% %Q"
                                         << "100% %Q";
    QTest::newRow("trailing percent") << evening << "a%"
                                      << "a%";
}

void TestSupport::calendarFormat()
{
    QFETCH(QDateTime, when);
    QFETCH(QString, pattern);
    QFETCH(QString, expected);
    QCOMPARE(CalendarFormat::format(when, pattern), expected);
}

void TestSupport::englishNamesWhateverTheLocale()
{
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QDateTime when(QDate(2026, 12, 7), QTime(9, 30));
    const QString text = UpdateTimeText::longLastUpdate(when);
    QLocale::setDefault(saved);
    QCOMPARE(text, QStringLiteral("Monday, Dec 07 2026 at 09:30 AM"));
    QCOMPARE(UpdateTimeText::parseLongLastUpdate(text), when);
}

void TestSupport::logEntry_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << "Download of \"AIA 193\" Successful"
                           << "[2006/03/14 09:05PM] Download of \"AIA 193\" Successful";
    QTest::newRow("empty message keeps the blank") << ""
                                                   << "[2006/03/14 09:05PM] ";
    QTest::newRow("line feeds pass through") << "a\nb"
                                             << "[2006/03/14 09:05PM] a\nb";
    QTest::newRow("placeholders are not expanded") << "%1 %@ %d"
                                                   << "[2006/03/14 09:05PM] %1 %@ %d";
}

void TestSupport::logEntry()
{
    QFETCH(QString, message);
    QFETCH(QString, expected);
    QCOMPARE(LogEntry::text(QDateTime(QDate(2006, 3, 14), QTime(21, 5, 59)), message), expected);
}

void TestSupport::updateTimeTextRoundTrip_data()
{
    QTest::addColumn<QDateTime>("when");
    QTest::newRow("afternoon") << QDateTime(QDate(2026, 11, 16), QTime(17, 57));
    QTest::newRow("just after midnight") << QDateTime(QDate(2026, 1, 1), QTime(0, 1));
    QTest::newRow("noon") << QDateTime(QDate(2026, 6, 30), QTime(12, 0));
    QTest::newRow("leap day") << QDateTime(QDate(2028, 2, 29), QTime(23, 59));
}

void TestSupport::updateTimeTextRoundTrip()
{
    QFETCH(QDateTime, when);
    // Seconds are not stored, so the text reads back to the minute.
    const QDateTime withSeconds = when.addSecs(42);
    QCOMPARE(UpdateTimeText::parseLongLastUpdate(UpdateTimeText::longLastUpdate(withSeconds)),
             when);
}

void TestSupport::updateTimeTextRejects_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << "";
    QTest::newRow("another language") << "Montag, Nov 16 2026 um 05:57 PM";
    QTest::newRow("unknown month") << "Monday, Foo 16 2026 at 05:57 PM";
    QTest::newRow("hour 13") << "Monday, Nov 16 2026 at 13:57 PM";
    QTest::newRow("hour 0") << "Monday, Nov 16 2026 at 00:57 PM";
    QTest::newRow("minute 60") << "Monday, Nov 16 2026 at 05:60 PM";
    QTest::newRow("31 November") << "Monday, Nov 31 2026 at 05:57 PM";
    QTest::newRow("no meridiem") << "Monday, Nov 16 2026 at 05:57";
    QTest::newRow("garbage") << QString(5000, QLatin1Char('x'));
}

void TestSupport::updateTimeTextRejects()
{
    QFETCH(QString, text);
    QVERIFY(!UpdateTimeText::parseLongLastUpdate(text).isValid());
}

void TestSupport::sizeText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QSize>("size");
    QTest::newRow("ours") << "{800, 600}" << QSize(800, 600);
    QTest::newRow("fractions truncate") << "{800.7, 600.2}" << QSize(800, 600);
    QTest::newRow("missing height") << "{800}" << QSize(800, 0);
    QTest::newRow("garbage") << "large" << QSize(0, 0);
    QTest::newRow("huge is bounded") << "{1e300, 5}" << QSize(1 << 20, 5);
}

void TestSupport::sizeText()
{
    QFETCH(QString, text);
    QFETCH(QSize, size);
    QCOMPARE(GeometryText::toSize(text), size);
    if (text == QLatin1String("{800, 600}"))
        QCOMPARE(GeometryText::fromSize(size), text);
}

void TestSupport::rectText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<bool>("empty");
    QTest::newRow("ours") << "{{10, 20}, {300, 400}}" << QRect(10, 20, 300, 400) << false;
    QTest::newRow("zero") << "{{0, 0}, {0, 0}}" << QRect(0, 0, 0, 0) << true;
    QTest::newRow("negative width") << "{{5, 5}, {-3, 40}}" << QRect(5, 5, -3, 40) << true;
    QTest::newRow("garbage") << "}{" << QRect(0, 0, 0, 0) << true;
}

void TestSupport::rectText()
{
    QFETCH(QString, text);
    QFETCH(QRect, rect);
    QFETCH(bool, empty);
    QCOMPARE(GeometryText::toRect(text), rect);
    QCOMPARE(GeometryText::isEmptyRect(GeometryText::toRect(text)), empty);
    QCOMPARE(GeometryText::toRect(GeometryText::fromRect(rect)), rect);
}

VANTOREL_TEST_CORE_MAIN(TestSupport)
#include "test_support.moc"
