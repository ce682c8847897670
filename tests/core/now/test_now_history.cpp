#include "RecordingLog.h"
#include "TestEnvironment.h"

#include "core/now/NowHistory.h"
#include "core/now/NowRecorder.h"
#include "core/now/NowSeriesReducer.h"
#include "core/settings/Preferences.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

// The local history: a later download of the same minute replaces what was kept, old samples
// go, a damaged database is moved aside and a new one started, the recorder merges off the
// main thread, and a series is thinned to a chart's width without losing what it shows.
class TestNowHistory : public QObject {
    Q_OBJECT

private slots:
    void init();
    void mergeReplacesTheSameMinute();
    void retention();
    void damagedDatabaseIsMovedAside();
    void recorderMergesAFile();
    void reduction_data();
    void reduction();

private:
    static QString values(const NowSamples &samples)
    {
        QStringList list;
        for (const NowSample &s : samples)
            list << QStringLiteral("%1=%2%3").arg(s.time).arg(s.value).arg(s.text);
        return list.join(' ');
    }
    QString _folder;
    QString _path;
};

namespace {
constexpr qint64 kDay = 86400;
constexpr qint64 kNow = 1'800'000'000;
} // namespace

void TestNowHistory::init()
{
    TestEnvironment::resetState();
    _folder = TestEnvironment::makeFolder(QStringLiteral("data"));
    _path = NowHistory::pathInFolder(_folder);
}

void TestNowHistory::mergeReplacesTheSameMinute()
{
    NowHistory history(_path);
    QCOMPARE(history.merge("solar-wind",
                           {{"speed", kNow - 120, 400, "ACE"}, {"speed", kNow - 60, 410, "ACE"}},
                           kNow, 400),
             2);
    // The next download repeats a minute with a corrected value and adds one; a fill value is
    // kept as no value.
    QCOMPARE(history.merge("solar-wind",
                           {{"speed", kNow - 60, 415, "SOLAR1"}, {"speed", kNow, std::nan(""), {}}},
                           kNow, 400),
             2);
    QCOMPARE(
        values(history.samples("solar-wind", "speed", kNow - kDay, kNow)),
        QStringLiteral("%1=400ACE %2=415SOLAR1 %3=nan").arg(kNow - 120).arg(kNow - 60).arg(kNow));
    // Series are kept apart by kind as well as by name.
    QCOMPARE(history.samples("imf", "speed", 0, kNow).size(), 0);
}

void TestNowHistory::retention()
{
    NowHistory history(_path);
    QCOMPARE(history.merge("kp", {{"kp", kNow - 10 * kDay, 2, {}}, {"kp", kNow - 2 * kDay, 3, {}}},
                           kNow, 400),
             2);
    // Five days on, with a retention of eight days: the oldest sample goes, and a sample
    // already older than the retention is never written.
    QCOMPARE(history.merge("kp", {{"kp", kNow - 5 * kDay, 1, {}}, {"kp", kNow + 5 * kDay, 4, {}}},
                           kNow + 5 * kDay, 8),
             1);
    QCOMPARE(values(history.samples("kp", "kp", 0, kNow + 10 * kDay)),
             QStringLiteral("%1=3 %2=4").arg(kNow - 2 * kDay).arg(kNow + 5 * kDay));
    QVERIFY(history.clear());
    QCOMPARE(history.samples("kp", "kp", 0, kNow + 10 * kDay).size(), 0);
}

void TestNowHistory::damagedDatabaseIsMovedAside()
{
    QFile damaged(_path);
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write(QByteArray(8192, 'x'));
    damaged.close();

    RecordingLog log;
    NowHistory history(_path, &log);
    QCOMPARE(history.merge("kp", {{"kp", kNow, 2, {}}}, kNow, 400), 1);
    QCOMPARE(log.entries.size(), 1);
    QVERIFY2(log.entries.first().startsWith(
                 QStringLiteral("error: The history \"%1\" cannot be used (").arg(_path)),
             qPrintable(log.entries.first()));
    const QStringList aside =
        QDir(_folder).entryList({QStringLiteral("History.sqlite.damaged-*")}, QDir::Files);
    QCOMPARE(aside.size(), 1);
    QVERIFY(log.entries.first().contains(aside.first()));
    QFile kept(QDir(_folder).filePath(aside.first()));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray(8192, 'x'));
    QCOMPARE(history.samples("kp", "kp", 0, kNow).size(), 1);
}

void TestNowHistory::recorderMergesAFile()
{
    const QString file = QDir(_folder).filePath(QStringLiteral("NowKp.json"));
    QFile json(file);
    QVERIFY(json.open(QIODevice::WriteOnly));
    json.write(
        R"([{"time_tag":"2026-05-01T00:00:00","Kp":2.33},{"time_tag":"2026-05-01T03:00:00","Kp":3}])");
    json.close();
    TestEnvironment::setNow(QDateTime(QDate(2026, 5, 2), QTime(1, 0), Qt::UTC));
    Preferences::shared().setHistoryRetentionDays(1);
    {
        NowRecorder recorder(_path);
        QSignalSpy recorded(&recorder, &NowRecorder::recorded);
        recorder.record(QStringLiteral("kp"), file);
        QVERIFY(recorded.wait(10000));
        // The preference's retention applies: the first sample is more than a day old.
        QCOMPARE(recorded.first(), (QVariantList{QStringLiteral("kp"), 1}));
    }
    NowHistory history(_path);
    QCOMPARE(history.samples("kp", "kp", 0, kNow).size(), 1);
}

void TestNowHistory::reduction_data()
{
    // Samples "time:value" over the span 0 to 100, that many columns, the largest gap and the most
    // segments; the result "time:value", "|" where the line breaks.
    columns<QString, int, int, int, QString>("samples", "columns", "gap", "most", "expected");
    const auto row = [](const char *name, const char *samples, int columns, int gap, int most,
                        const char *expected) {
        QTest::newRow(name) << QString(samples) << columns << gap << most << QString(expected);
    };
    row("a spike keeps its height", "0:1 1:1 2:9 3:1 4:-3 5:1 6:1", 1, 100, 48, "2:9 4:-3");
    row("equal values, one point", "0:4 1:4 2:4", 1, 100, 48, "0:4");
    row("column edges, ends included", "-1:5 9:1 10:2 15:2.5 19:3 20:4 100:6 101:7", 10, 100, 48,
        "9:1 10:2 19:3 20:4 100:6");
    row("nothing in the span", "-5:1 105:2", 10, 100, 48, "");
    row("no samples", "", 10, 100, 48, "");
    row("no columns", "0:1 50:2", 0, 100, 48, "");
    row("a missing value is skipped", "0:1 1:nan 2:3", 100, 100, 48, "0:1 2:3");
    row("a gap breaks the line", "0:1 5:2 30:3 35:4", 100, 10, 48, "0:1 5:2 | 30:3 35:4");
    row("the narrowest gaps bridged", "0:1 5:1 25:1 35:1", 100, 1, 3, "0:1 5:1 | 25:1 | 35:1");
}

void TestNowHistory::reduction()
{
    NowSeriesReducer reducer(0, 100, fetch<int>("columns"), fetch<int>("gap"));
    for (const QString &sample : fetch<QString>("samples").split(' ', Qt::SkipEmptyParts))
        reducer.add(sample.section(':', 0, 0).toLongLong(), sample.section(':', 1).toDouble());
    QStringList segments;
    for (const NowSeriesReducer::Segment &segment : reducer.segments(fetch<int>("most"))) {
        QStringList points;
        for (const QPointF &point : segment)
            points << QStringLiteral("%1:%2").arg(point.x() / 1000).arg(point.y());
        segments << points.join(' ');
    }
    QCOMPARE(segments.join(" | "), fetch<QString>("expected"));
}

VANTOREL_TEST_CORE_MAIN(TestNowHistory)
#include "test_now_history.moc"
