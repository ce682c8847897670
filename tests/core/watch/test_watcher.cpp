#include "RecordingLog.h"
#include "TestEnvironment.h"

#include "core/now/AuroraGrid.h"
#include "core/settings/NotificationSettings.h"
#include "core/settings/Settings.h"
#include "core/watch/SolarPosition.h"
#include "core/watch/Watcher.h"

#include <QRegularExpression>
#include <QtTest>

#include <memory>

// The watcher's rules, driven step by step through recorded data with a clock of its own, and
// the Sun's position they rest on, against published values.
class TestWatcher : public QObject {
    Q_OBJECT

private slots:
    // Quiet hours are local clock times; an hour east of UTC, one read as UTC shows.
    void initTestCase() { qputenv("TZ", "Europe/Oslo"); }
    void init() { TestEnvironment::resetState(); }
    void rules_data();
    void rules();
    void sunPosition_data();
    void sunPosition();
};

// Each step: "ACTION; ACTION => EVENTS", the events delivered by the evaluation after the actions,
// by rule, "*" marking those held through the quiet hours. The actions:
//   +3h, +15m        the clock moves on (it starts on 2026-01-15 at 20:00 UTC)
//   kp 5.33 [HOURS]  the K index estimated ten minutes (and so many hours) ago
//   xray 2e-5@-3 ..  X-ray fluxes, the minutes before now after "@" (by default one a minute,
//                    the last now)
//   msg CODE SERIAL [HOURS]   a message issued a minute (and so many hours) ago
//   home LAT LON, aurora VALUE   the home location; the forecast there, observed now
//   kp-threshold N, flare CLASS, families PREFIX..., quiet FROM TO   the settings
//   restart          a new watcher on the same settings store
void TestWatcher::rules_data()
{
    columns<QStringList>("steps");
    QTest::newRow("storm: once, re-armed below the threshold - 1")
        << QStringList{"kp 5.33 => kp", "+3h; kp 4.33 =>", "+3h; kp 5.67 =>", "+3h; kp 3.67 =>",
                       "+3h; kp 5 => kp"};
    QTest::newRow("storm: another threshold, and no K index of long ago")
        << QStringList{"kp-threshold 7; kp 8 7 =>", "kp 6.67 =>", "kp 7 => kp"};
    QTest::newRow("flare: a peak between two looks, once per flare, nothing before the first")
        << QStringList{"xray 1e-4@-30 1e-6@-2 1.2e-5@-1 3e-6 => flare", "+5m; xray 2e-5 => flare",
                       "+5m; xray 8e-6 1.5e-5 =>", "+5m; xray 4e-6 1.1e-5 => flare"};
    QTest::newRow("flare: another class")
        << QStringList{"flare X1; xray 5e-5 =>", "+5m; xray 1e-4 => flare"};
    QTest::newRow("messages: the families chosen, each once, of the last day, across a restart")
        << QStringList{"msg WARK04 1; msg WATA20 2; msg ALTK05 3; msg SUMX01 4; msg ALTK06 5 25 "
                       "=> message message message",
                       "restart =>", "+1h; msg ALTK05 3; msg ALTK07 6 => message",
                       "families WAR WAT ALT SUM => message"};
    QTest::newRow("aurora: in the dark, once, re-armed below half and at daybreak; wrapping")
        << QStringList{"home 65 -0.4; aurora 12 => aurora",
                       "+30m; aurora 15 =>",
                       "+30m; aurora 4 =>",
                       "+30m; aurora 11 => aurora",
                       "+13h; aurora 30 =>",
                       "+8h; aurora 30 => aurora"};
    QTest::newRow("aurora: off without a location") << QStringList{"aurora 50 =>"};
    QTest::newRow("quiet hours: held across a restart, delivered together when they end")
        << QStringList{"quiet 22:00 07:00; kp 6 => kp", "+3h; msg WARK05 7 =>",
                       "restart; +4h; xray 2e-5 =>", "+3h15m => message* flare*"};
}

void TestWatcher::rules()
{
    QDateTime now(QDate(2026, 1, 15), QTime(20, 0), Qt::UTC);
    NotificationSettings settings;
    NowSummary::Data data;
    std::optional<AuroraGrid> aurora;
    RecordingLog log;
    auto watcher = std::make_unique<Watcher>(Settings::store(), &log);
    qsizetype delivered = 0;
    const auto byTime = [](const NowSample &a, const NowSample &b) { return a.time < b.time; };
    for (const QString &step : fetch<QStringList>("steps")) {
        for (const QString &action : step.section("=>", 0, 0).split(';', Qt::SkipEmptyParts)) {
            const QStringList w = action.split(' ', Qt::SkipEmptyParts);
            const QString verb = w.value(0);
            const qint64 t = now.toSecsSinceEpoch();
            if (verb.startsWith('+')) {
                for (const auto &m : QRegularExpression("(\\d+)([hm])").globalMatch(verb))
                    now = now.addSecs(m.captured(1).toInt() * (m.captured(2) == "h" ? 3600 : 60));
            } else if (verb == "kp") {
                data["kp-forecast"] = {
                    {"kp", t - 600 - w.value(2).toInt() * 3600, w[1].toDouble(), "estimated"}};
            } else if (verb == "xray") {
                for (int i = 1; i < w.size(); ++i) {
                    const qint64 minutes =
                        w[i].contains('@') ? -w[i].section('@', 1).toInt() : w.size() - 1 - i;
                    data["xray"].append(
                        {"0.1-0.8nm", t - 60 * minutes, w[i].section('@', 0, 0).toDouble(), "18"});
                }
            } else if (verb == "msg") {
                data["messages"].append(
                    {"P", t - 60 - w.value(3).toInt() * 3600, w[2].toDouble(),
                     QString("Space Weather Message Code: %1\r\nSerial Number: %2\r\n\r\nText\r\n")
                         .arg(w[1], w[2])});
            } else if (verb == "home") {
                settings.latitude = w[1].toDouble();
                settings.longitude = w[2].toDouble();
            } else if (verb == "aurora") {
                aurora.emplace();
                aurora->setTimes(t, t + 1800);
                if (settings.hasLocation())
                    aurora->setValue((qRound(*settings.longitude) + 360) % 360,
                                     qRound(*settings.latitude), w[1].toDouble());
            } else if (verb == "restart") {
                watcher = std::make_unique<Watcher>(Settings::store(), &log);
            } else if (verb == "kp-threshold") {
                settings.kpThreshold = w[1].toInt();
            } else if (verb == "flare") {
                settings.flareClass = w[1];
            } else if (verb == "families") {
                settings.families = 0;
                for (const QString &prefix : w.mid(1))
                    settings.families |= NotificationSettings::familyOfCode(prefix);
            } else if (verb == "quiet") {
                settings.quietHours = true;
                settings.quietStart = QTime::fromString(w[1], "HH:mm");
                settings.quietEnd = QTime::fromString(w[2], "HH:mm");
            } else {
                QFAIL(qPrintable("unknown action: " + action));
            }
        }
        for (NowSamples &samples : data)
            std::stable_sort(samples.begin(), samples.end(), byTime);
        QStringList rules;
        for (const WatchEvent &event :
             watcher->evaluate(data, aurora ? &*aurora : nullptr, settings, now))
            rules << event.rule + (event.held ? "*" : "");
        QCOMPARE(rules.join(' '), step.section("=>", 1).trimmed());
        delivered += rules.size();
    }
    // Every event went to the log once, when it was raised, held or not.
    QCOMPARE(log.entries.size(), delivered);
}

void TestWatcher::sunPosition_data()
{
    columns<QString, QDateTime, double>("what", "utc", "expected");
    const auto utc = [](const char *text) { return QDateTime::fromString(text, Qt::ISODate); };
    // Meeus, Astronomical Algorithms, example 25.a and its full-precision values (13h13m30.749s,
    // -7°47'01.74"); example 12.b (8h34m57.0896s); example 13.b (Venus from the US Naval
    // Observatory). The 2024 equinox and solstice at the instants published for them.
    QTest::newRow("right ascension") << "ra" << utc("1992-10-13T00:00:00Z") << 198.37812;
    QTest::newRow("declination") << "dec" << utc("1992-10-13T00:00:00Z") << -7.78382;
    QTest::newRow("March equinox 2024") << "dec" << utc("2024-03-20T03:06:00Z") << 0.0;
    QTest::newRow("June solstice 2024") << "dec" << utc("2024-06-20T20:51:00Z") << 23.44;
    QTest::newRow("sidereal time") << "sidereal" << utc("1987-04-10T19:21:00Z") << 128.7378734;
    QTest::newRow("altitude, west of Greenwich")
        << "venus" << utc("1987-04-10T19:21:00Z") << 15.1249;
}

void TestWatcher::sunPosition()
{
    const QString what = fetch<QString>("what");
    const qint64 t = fetch<QDateTime>("utc").toSecsSinceEpoch();
    const SolarPosition::Equatorial sun = SolarPosition::sun(t);
    const double value = what == "ra"         ? sun.rightAscension
                         : what == "dec"      ? sun.declination
                         : what == "sidereal" ? SolarPosition::siderealTime(t)
                                              : SolarPosition::altitude({347.3193375, -6.7198917},
                                                                        t, 38.9213889, -77.0655556);
    QVERIFY2(qAbs(value - fetch<double>("expected")) < 0.01, qPrintable(QString::number(value)));
}

VANTOREL_TEST_CORE_MAIN(TestWatcher)
#include "test_watcher.moc"
