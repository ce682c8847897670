#include "TestEnvironment.h"

#include "core/log/LogEntry.h"
#include "core/sources/UpdateTimeText.h"
#include "core/util/CalendarFormat.h"
#include "core/util/GeometryText.h"
#include "core/util/ImageScaling.h"
#include "core/util/SplitLayout.h"

#include <QLocale>
#include <QtTest>

// The small text formats under the others: calendar patterns, log stamps, stored update times,
// sizes and rectangles, the stored layout of split panes, and the size an image is shown at.
class TestSupport : public QObject {
    Q_OBJECT

private slots:
    void calendarFormat_data()
    {
        columns<QDateTime, QString, QString>("when", "pattern", "expected");
        const QDateTime evening(QDate(2026, 11, 16), QTime(17, 57, 9));
        const QDateTime midnight(QDate(2006, 3, 4), QTime(0, 5));
        QTest::newRow("midnight is 12 AM") << midnight << "%Y/%m/%d %I:%M%p"
                                           << "2006/03/04 12:05AM";
        QTest::newRow("noon is 12 PM") << QDateTime(QDate(2006, 3, 14), QTime(12, 0)) << "%I:%M %p"
                                       << "12:00 PM";
        QTest::newRow("month and weekday names") << evening << "%A, %B %b"
                                                 << "Monday, November Nov";
        QTest::newRow("seconds, day of year, 24 h") << evening << "%H:%M:%S %j"
                                                    << "17:57:09 320";
        QTest::newRow("percent and unknown") << evening << "100%% %Q"
                                             << "100% %Q";
        QTest::newRow("trailing percent") << evening << "a%"
                                          << "a%";
    }

    void calendarFormat()
    {
        QCOMPARE(CalendarFormat::format(fetch<QDateTime>("when"), fetch<QString>("pattern")),
                 fetch<QString>("expected"));
    }

    void englishNamesWhateverTheLocale()
    {
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const QDateTime when(QDate(2026, 12, 7), QTime(9, 30));
        const QString text = UpdateTimeText::longLastUpdate(when);
        QLocale::setDefault(saved);
        QCOMPARE(text, QStringLiteral("Monday, Dec 07 2026 at 09:30 AM"));
        QCOMPARE(UpdateTimeText::parseLongLastUpdate(text), when);
    }

    void logEntry()
    {
        const QDateTime when(QDate(2006, 3, 14), QTime(21, 5, 59));
        QCOMPARE(LogEntry::text(when, QStringLiteral("Download of \"AIA 193\" Successful")),
                 QStringLiteral("[2006/03/14 09:05PM] Download of \"AIA 193\" Successful"));
        // The message is text, not a pattern.
        QCOMPARE(LogEntry::text(when, QStringLiteral("%1 %@ %d")),
                 QStringLiteral("[2006/03/14 09:05PM] %1 %@ %d"));
    }

    void storedUpdateTime_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("when"); // invalid: refused
        const auto at = [](int y, int mo, int d, int h, int mi) {
            return QDateTime(QDate(y, mo, d), QTime(h, mi));
        };
        QTest::newRow("afternoon") << "Monday, Nov 16 2026 at 05:57 PM" << at(2026, 11, 16, 17, 57);
        QTest::newRow("after midnight")
            << "Thursday, Jan 01 2026 at 12:01 AM" << at(2026, 1, 1, 0, 1);
        QTest::newRow("noon") << "Tuesday, Jun 30 2026 at 12:00 PM" << at(2026, 6, 30, 12, 0);
        QTest::newRow("leap day") << "Tuesday, Feb 29 2028 at 11:59 PM" << at(2028, 2, 29, 23, 59);
        QTest::newRow("empty") << "" << QDateTime();
        QTest::newRow("another language") << "Montag, Nov 16 2026 um 05:57 PM" << QDateTime();
        QTest::newRow("unknown month") << "Monday, Foo 16 2026 at 05:57 PM" << QDateTime();
        QTest::newRow("hour 13") << "Monday, Nov 16 2026 at 13:57 PM" << QDateTime();
        QTest::newRow("hour 0") << "Monday, Nov 16 2026 at 00:57 PM" << QDateTime();
        QTest::newRow("minute 60") << "Monday, Nov 16 2026 at 05:60 PM" << QDateTime();
        QTest::newRow("31 November") << "Monday, Nov 31 2026 at 05:57 PM" << QDateTime();
        QTest::newRow("no meridiem") << "Monday, Nov 16 2026 at 05:57" << QDateTime();
        QTest::newRow("garbage") << QString(5000, QLatin1Char('x')) << QDateTime();
    }

    void storedUpdateTime()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, when);
        QCOMPARE(UpdateTimeText::parseLongLastUpdate(text), when);
        if (when.isValid()) // and seconds are not stored
            QCOMPARE(UpdateTimeText::longLastUpdate(when.addSecs(42)), text);
    }

    void sizeText_data()
    {
        columns<QString, QSize>("text", "size");
        QTest::newRow("ours") << "{800, 600}" << QSize(800, 600);
        QTest::newRow("fractions truncate") << "{800.7, 600.2}" << QSize(800, 600);
        QTest::newRow("missing height") << "{800}" << QSize(800, 0);
        QTest::newRow("garbage") << "large" << QSize(0, 0);
        QTest::newRow("huge is bounded") << "{1e300, 5}" << QSize(1 << 20, 5);
    }

    void sizeText()
    {
        QFETCH(QSize, size);
        QCOMPARE(GeometryText::toSize(fetch<QString>("text")), size);
        QCOMPARE(GeometryText::toSize(GeometryText::fromSize(size)), size);
    }

    void rectText_data()
    {
        columns<QString, QRect, bool>("text", "rect", "empty");
        QTest::newRow("ours") << "{{10, 20}, {300, 400}}" << QRect(10, 20, 300, 400) << false;
        QTest::newRow("zero") << "{{0, 0}, {0, 0}}" << QRect(0, 0, 0, 0) << true;
        QTest::newRow("negative width") << "{{5, 5}, {-3, 40}}" << QRect(5, 5, -3, 40) << true;
        QTest::newRow("garbage") << "}{" << QRect(0, 0, 0, 0) << true;
    }

    void rectText()
    {
        QFETCH(QRect, rect);
        QCOMPARE(GeometryText::toRect(fetch<QString>("text")), rect);
        QCOMPARE(GeometryText::isEmptyRect(rect), fetch<bool>("empty"));
        QCOMPARE(GeometryText::toRect(GeometryText::fromRect(rect)), rect);
    }

    void imageScaling_data()
    {
        columns<QSize, QSize>("pixels", "points");
        QTest::newRow("wide") << QSize(1600, 1200) << QSize(800, 600);
        QTest::newRow("tall") << QSize(900, 1200) << QSize(600, 800);
        QTest::newRow("a tie") << QSize(1000, 1000) << QSize(800, 800);
        QTest::newRow("truncated") << QSize(801, 10) << QSize(800, 9);
        QTest::newRow("both sides too long") << QSize(2000, 1001) << QSize(800, 400);
        QTest::newRow("never enlarged") << QSize(640, 480) << QSize(640, 480);
    }

    void imageScaling()
    {
        QCOMPARE(ImageScaling::scaledSize(fetch<QSize>("pixels")), fetch<QSize>("points"));
    }

    void splitRestore_data()
    {
        columns<QStringList, bool, QList<QRect>>("stored", "sideBySide", "expected");
        const QList<QRect> current{QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)};
        QTest::newRow("three stored, two panes")
            << QStringList{"{{0, 0}, {300, 500}}", "{{304, 0}, {500, 500}}", "{{1, 1}, {1, 1}}"}
            << true << QList<QRect>{QRect(0, 0, 300, 500), QRect(304, 0, 500, 500)};
        QTest::newRow("one stored: only the first pane")
            << QStringList{"{{0, 0}, {250, 500}}"} << true
            << QList<QRect>{QRect(0, 0, 250, 500), current[1]};
        QTest::newRow("zero rect, side by side: no width at its place")
            << QStringList{"{{0, 0}, {250, 500}}", "{{0, 0}, {0, 0}}"} << true
            << QList<QRect>{QRect(0, 0, 250, 500), QRect(204, 0, 0, 500)};
        QTest::newRow("zero rect, stacked: no height")
            << QStringList{"{{0, 0}, {0, 0}}"} << false
            << QList<QRect>{QRect(0, 0, 200, 0), current[1]};
        QTest::newRow("nothing stored") << QStringList{} << true << current;
    }

    void splitRestore()
    {
        const QList<QRect> current{QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)};
        QCOMPARE(SplitLayout::restoredRects(fetch<QStringList>("stored"), current,
                                            fetch<bool>("sideBySide")),
                 fetch<QList<QRect>>("expected"));
    }

    void splitStore()
    {
        // A collapsed pane is stored as a zero rectangle.
        QCOMPARE(SplitLayout::storedRects({QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)},
                                          {false, true}),
                 QStringList({"{{0, 0}, {200, 500}}", "{{0, 0}, {0, 0}}"}));
    }
};

VANTOREL_TEST_CORE_MAIN(TestSupport)
#include "test_support.moc"
