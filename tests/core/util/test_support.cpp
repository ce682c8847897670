#include "TestEnvironment.h"

#include "core/log/LogEntry.h"
#include "core/sources/UpdateTimeText.h"
#include "core/util/GeometryText.h"
#include "core/util/SplitLayout.h"

#include <QLocale>

namespace {
QDateTime at(int y, int mo, int d, int h, int mi, int s = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s));
}
const QList<QRect> kPanes{QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)};
} // namespace

// The small text formats under the others: log stamps, stored update times, sizes and rectangles,
// and the stored layout of split panes.
class TestSupport : public QObject {
    Q_OBJECT

private slots:
    void logEntry()
    {
        // The message is text, not a pattern.
        QCOMPARE(LogEntry::text(at(2006, 3, 14, 21, 5, 59), u"Download of \"A\" %1"_s),
                 u"[2006/03/14 09:05PM] Download of \"A\" %1"_s);
    }

    // Written with English names whatever the locale; an invalid expected time: refused.
    void storedUpdateTime_data()
    {
        columns<QString, QDateTime>("text", "when");
        QTest::newRow("afternoon") << "Monday, Nov 16 2026 at 05:57 PM" << at(2026, 11, 16, 17, 57);
        QTest::newRow("after midnight")
            << "Thursday, Jan 01 2026 at 12:01 AM" << at(2026, 1, 1, 0, 1);
        QTest::newRow("noon") << "Tuesday, Jun 30 2026 at 12:00 PM" << at(2026, 6, 30, 12, 0);
        QTest::newRow("another language") << "Montag, Nov 16 2026 um 05:57 PM" << QDateTime();
        QTest::newRow("hour 13") << "Monday, Nov 16 2026 at 13:57 PM" << QDateTime();
        QTest::newRow("31 November") << "Monday, Nov 31 2026 at 05:57 PM" << QDateTime();
    }

    void storedUpdateTime()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, when);
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(UpdateTimeText::parseLongLastUpdate(text), when);
        if (when.isValid()) // and seconds are not stored
            QCOMPARE(UpdateTimeText::longLastUpdate(when.addSecs(42)), text);
        QLocale::setDefault(saved);
    }

    void sizeAndRectText_data()
    {
        columns<QString, QRect, bool>("text", "rect", "empty");
        QTest::newRow("rect") << "{{10, 20}, {300, 400}}" << QRect(10, 20, 300, 400) << false;
        QTest::newRow("negative width") << "{{5, 5}, {-3, 40}}" << QRect(5, 5, -3, 40) << true;
        QTest::newRow("size") << "{800, 600}" << QRect(0, 0, 800, 600) << false;
        QTest::newRow("huge size is bounded") << "{1e300, 5}" << QRect(0, 0, 1 << 20, 5) << false;
    }

    void sizeAndRectText()
    {
        QFETCH(QRect, rect);
        const QString text = fetch<QString>("text");
        if (text.count(QLatin1Char('{')) == 1) {
            QCOMPARE(GeometryText::toSize(text), rect.size());
            QCOMPARE(GeometryText::toSize(GeometryText::fromSize(rect.size())), rect.size());
            return;
        }
        QCOMPARE(GeometryText::toRect(text), rect);
        QCOMPARE(GeometryText::isEmptyRect(rect), fetch<bool>("empty"));
        QCOMPARE(GeometryText::toRect(GeometryText::fromRect(rect)), rect);
    }

    void splitRestore_data()
    {
        columns<QStringList, bool, QList<QRect>>("stored", "sideBySide", "expected");
        QTest::newRow("three stored, two panes")
            << QStringList{"{{0, 0}, {300, 500}}", "{{304, 0}, {500, 500}}", "{{1, 1}, {1, 1}}"}
            << true << QList<QRect>{QRect(0, 0, 300, 500), QRect(304, 0, 500, 500)};
        QTest::newRow("zero rect, side by side: no width at its place")
            << QStringList{"{{0, 0}, {250, 500}}", "{{0, 0}, {0, 0}}"} << true
            << QList<QRect>{QRect(0, 0, 250, 500), QRect(204, 0, 0, 500)};
        QTest::newRow("zero rect, stacked: no height; the second pane kept")
            << QStringList{"{{0, 0}, {0, 0}}"} << false
            << QList<QRect>{QRect(0, 0, 200, 0), kPanes[1]};
    }

    void splitRestore()
    {
        QCOMPARE(SplitLayout::restoredRects(fetch<QStringList>("stored"), kPanes,
                                            fetch<bool>("sideBySide")),
                 fetch<QList<QRect>>("expected"));
    }
};

VANTOREL_TEST_CORE_MAIN(TestSupport)
#include "test_support.moc"
