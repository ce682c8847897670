#include "TestEnvironment.h"

#include "core/moon/MoonCalc.h"

#include <QtTest>

#include <cmath>
#include <ctime>

// The ephemeris against worked values, the octant edges, the calendar conversions and the
// ordering of the phase dates around the date described.
class TestMoonCalc : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The worked values assume local time equals universal time.
        useTimeZone("UTC");
    }

    void init()
    {
        TestEnvironment::resetState();
        TestEnvironment::setNow(QDateTime(QDate(2024, 3, 15), QTime(15, 42), QTimeZone::utc()));
    }

    void cleanup() { useTimeZone("UTC"); }

    void julianDates_data()
    {
        columns<QDateTime, double>("date", "jd");
        QTest::newRow("J2000") << utc(2000, 1, 1, 12) << 2451545.0;
        QTest::newRow("epoch 1980 Jan 0.0") << utc(1979, 12, 31) << 2444238.5;
        QTest::newRow("February, counted in the year before") << utc(2008, 2, 29, 18) << 2454526.25;
        QTest::newRow("March, the first month of the year") << utc(2008, 3, 1) << 2454526.5;
        QTest::newRow("1900 lunation base day") << utc(1900, 1, 1) << 2415020.5;
        QTest::newRow("last second of a year")
            << utc(1999, 12, 31, 23, 59, 59) << 2451544.5 - 1.0 / 86400.0;
        QTest::newRow("seconds count, milliseconds do not")
            << utc(2000, 1, 1, 12, 0, 1).addMSecs(999) << 2451545.0 + 1.0 / 86400.0;
    }

    // Both ways; seconds truncate on the way back.
    void julianDates()
    {
        QFETCH(QDateTime, date);
        QFETCH(double, jd);
        QCOMPARE(MoonCalc::julianDateForDate(date), jd);
        QCOMPARE(MoonCalc::calendarDateForJulianDate(jd + 0.9 / 86400.0),
                 date.addMSecs(-date.time().msec()));
    }

    void gmtShiftUsesTheCurrentOffset()
    {
        // New York: five hours behind in winter, four in summer. "Now" is in winter, so a summer
        // date is shifted by the winter offset too.
        useTimeZone("America/New_York");
        TestEnvironment::setNow(QDateTime(QDate(2024, 1, 15), QTime(12, 0), QTimeZone::utc()));
        const QTimeZone zone = MoonCalc::defaultTimeZone();
        const QDateTime summer(QDate(2024, 7, 1), QTime(8, 0), zone);
        QCOMPARE(MoonCalc::dateAtGMT(summer).time(), QTime(13, 0));
        QCOMPARE(MoonCalc::dateFromGMT(MoonCalc::dateAtGMT(summer)), summer);

        TestEnvironment::setNow(QDateTime(QDate(2024, 7, 15), QTime(12, 0), QTimeZone::utc()));
        QCOMPARE(MoonCalc::dateAtGMT(summer).time(), QTime(12, 0));

        MoonCalc calc;
        calc.setDate(summer);
        QCOMPARE(calc.julianDate(), MoonCalc::julianDateForDate(summer));
        QVERIFY(std::abs(calc.julianDateGMT() - calc.julianDate() - 4.0 / 24.0) < 1e-9);
    }

    // Phase, octant, age of phase, age, its days, hours and minutes, then (the same in both
    // hemispheres) illumination in percent, distance, angular diameter, the Sun's distance and
    // angular diameter; each to the digits given.
    void worked2008_data()
    {
        columns<bool, QStringList>("southern", "expected");
        const QStringList both{"43.65", "402126.49", "0.495262", "147100098", "0.542183"};
        QTest::newRow("northern") << false
                                  << QStringList{"0.770257", "6",  "45", "22.746157",
                                                 "22",       "17", "54"} +
                                         both;
        QTest::newRow("southern") << true
                                  << QStringList{"0.229743", "2",  "15", "6.784432",
                                                 "6",        "18", "49"} +
                                         both;
    }

    void worked2008()
    {
        QFETCH(QStringList, expected);
        MoonCalc calc;
        calc.setDisplayForSouthernHemisphere(fetch<bool>("southern"));
        calc.setDate(utc(2008, 1, 1));
        QCOMPARE(calc.julianDate(), 2454466.5);
        QCOMPARE(calc.julianDateGMT(), 2454466.5);
        const double values[] = {calc.moonPhaseAsDouble(),      double(calc.moonPhaseAsInteger()),
                                 double(calc.moonAgeOfPhase()), calc.moonAge(),
                                 double(calc.moonAgeDays()),    double(calc.moonAgeHours()),
                                 double(calc.moonAgeMinutes()), 100.0 * calc.moonIllumination(),
                                 calc.moonDistanceKilometers(), calc.moonAngularDiameter(),
                                 calc.solDistanceKilometers(),  calc.solAngularDiameter()};
        QStringList actual;
        for (qsizetype i = 0; i < expected.size(); ++i) {
            const qsizetype point = expected[i].indexOf(QLatin1Char('.'));
            actual << QString::number(values[i], 'f',
                                      point < 0 ? 0 : int(expected[i].size() - point - 1));
        }
        QCOMPARE(actual, expected);
    }

    void worked2008Phases()
    {
        MoonCalc calc;
        calc.setDate(utc(2008, 1, 1));
        QStringList current;
        for (const double jd : calc.currentPhases())
            current << minutes(jd);
        QCOMPARE(current,
                 QStringList({"2007-12-09 17:41", "2007-12-17 10:17", "2007-12-24 01:16",
                              "2007-12-31 07:51", "2008-01-08 11:37", "2008-01-30 05:03"}));
        QCOMPARE(calc.previousPhases()[0], MoonCalc::getTruePhase(1334, 0.0));
        QCOMPARE(calc.nextPhases()[1], MoonCalc::getTruePhase(1336, 0.25));
        QCOMPARE(calc.lastFullMoon(), MoonCalc::calendarDateForJulianDate(calc.currentPhases()[2]));
        QCOMPARE(calc.nextFullMoon(), MoonCalc::calendarDateForJulianDate(calc.nextPhases()[2]));
        QVERIFY(!calc.isBlueMoon());
    }

    void searchOnTheFirstOfAMonth()
    {
        MoonCalc calc;
        calc.setDate(utc(2008, 8, 1));
        QCOMPARE(calc.currentPhases()[0], MoonCalc::getTruePhase(1342, 0.0));
        QCOMPARE(minutes(calc.currentPhases()[0]), QString("2008-07-03 02:20"));
        QCOMPARE(minutes(calc.currentPhases()[4]), QString("2008-08-01 10:13"));
        QCOMPARE(calc.lastNewMoon().toString("yyyy-MM-dd HH:mm"), QString("2008-07-03 02:20"));
        QCOMPARE(calc.nextNewMoon().toString("yyyy-MM-dd HH:mm"), QString("2008-08-01 10:13"));
    }

    // Each edge of the eight octants from both sides, and the phase in twentieths (-1: not
    // checked); a phase out of range counts as new.
    void octants_data()
    {
        columns<double, int, int>("phase", "octant", "twentieth");
        const struct {
            double phase;
            int octant, twentieth;
        } rows[] = {{0.0, 0, 0},     {0.0249, 0, 0},       {0.025, 1, 1},   {0.2249, 1, -1},
                    {0.225, 2, -1},  {0.275, 3, -1},       {0.4749, 3, -1}, {0.475, 4, -1},
                    {0.5, 4, 10},    {0.5249, 4, -1},      {0.525, 5, -1},  {0.7349, 5, -1},
                    {0.735, 6, -1},  {0.77, 6, 15},        {0.7749, 6, -1}, {0.775, 7, -1},
                    {0.9749, 7, -1}, {0.975, 0, -1},       {1.0, 0, 20},    {-0.1, 0, -1},
                    {1.1, 0, -1},    {std::nan(""), 0, -1}};
        for (const auto &row : rows)
            QTest::addRow("%g", row.phase) << row.phase << row.octant << row.twentieth;
    }

    void octants()
    {
        QFETCH(double, phase);
        QFETCH(int, twentieth);
        QCOMPARE(MoonCalc::getMoonPhaseAsInteger(phase), fetch<int>("octant"));
        if (twentieth >= 0)
            QCOMPARE(MoonCalc::getPreciseMoonPhaseAsInteger(phase), twentieth);
    }

    void fullMoonDay()
    {
        // 2007-12-24 01:16 UT: set the date to the same Julian day, a few hours later.
        MoonCalc calc;
        calc.setDate(utc(2007, 12, 24, 6));
        QCOMPARE(calc.moonPhaseAsInteger(), 4);
        QCOMPARE(calc.currentFullMoon().toString("yyyy-MM-dd HH:mm"), QString("2007-12-24 01:16"));
        QVERIFY(calc.nextFullMoon() > calc.date().addDays(29));
        QVERIFY(calc.lastFullMoon() < calc.date().addDays(-29));
        // On the full moon's own Julian day the last full moon is November's, so this is no blue
        // moon.
        QCOMPARE(calc.lastFullMoon().date(), QDate(2007, 11, 24));
        QVERIFY(!calc.isBlueMoon());

        // After noon it is the next Julian day: the phase is still full, and the last full moon is
        // the one of the same calendar month.
        calc.setDate(utc(2007, 12, 24, 13));
        QCOMPARE(calc.moonPhaseAsInteger(), 4);
        QCOMPARE(calc.lastFullMoon().toString("yyyy-MM-dd HH:mm"), QString("2007-12-24 01:16"));
        QVERIFY(calc.isBlueMoon());
        calc.setDate(utc(2007, 12, 27, 18));
        QVERIFY(!calc.isBlueMoon());
    }

    void nextComparesOnTheUniversalScale()
    {
        // Five hours behind universal time, no daylight saving. Find a full moon between 12:00 and
        // 17:00 universal time: its local Julian day is the day before its universal one.
        useTimeZone("Etc/GMT+5");
        double fullMoon = 0.0;
        for (double k = 1335; k < 1400 && fullMoon == 0.0; ++k) {
            const double jd = MoonCalc::getTruePhase(k, 0.5);
            const double hour = (jd + 0.5 - std::floor(jd + 0.5)) * 24.0;
            if (hour > 12.5 && hour < 16.5)
                fullMoon = jd;
        }
        QVERIFY(fullMoon != 0.0);

        MoonCalc calc;
        calc.setDate(MoonCalc::dateFromGMT(MoonCalc::calendarDateForJulianDate(fullMoon)));
        QCOMPARE(calc.date().offsetFromUtc(), -5 * 3600);
        QCOMPARE(std::floor(calc.julianDateGMT()), std::floor(fullMoon));
        QVERIFY(std::floor(calc.julianDate()) < std::floor(fullMoon));
        // On one time scale the full moon is on the date's own day: neither next nor last.
        QVERIFY(calc.nextFullMoon() > calc.date().addDays(25));
        QVERIFY(calc.lastFullMoon() < calc.date().addDays(-25));
    }

    void phaseDatesBracketTheDate_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::newRow("UTC") << QByteArray("UTC");
        QTest::newRow("five hours behind") << QByteArray("Etc/GMT+5");
        QTest::newRow("eleven hours behind") << QByteArray("Etc/GMT+11");
        QTest::newRow("nine hours ahead") << QByteArray("Etc/GMT-9");
        QTest::newRow("fourteen hours ahead") << QByteArray("Etc/GMT-14");
    }

    // Over thousands of dates in zones on both sides of Greenwich: every "last" phase lies before
    // the date and every "next" one after it, each within one lunation, so it is the nearest one;
    // the current lunation is the one after the previous.
    void phaseDatesBracketTheDate()
    {
        useTimeZone(fetch<QByteArray>("zone").constData());

        using Getter = QDateTime (MoonCalc::*)() const;
        const Getter lasts[] = {&MoonCalc::lastNewMoon, &MoonCalc::lastFirstQuarter,
                                &MoonCalc::lastFullMoon, &MoonCalc::lastLastQuarter};
        const Getter nexts[] = {&MoonCalc::upcomingNewMoon, &MoonCalc::nextFirstQuarter,
                                &MoonCalc::nextFullMoon, &MoonCalc::nextLastQuarter};
        // A lunation lasts up to about 29.8 days, and a phase on the date's own Julian day is
        // skipped.
        const qint64 month = qint64(31 * 86400);

        MoonCalc calc;
        QDateTime date(QDate(1995, 1, 1), QTime(0, 0), MoonCalc::defaultTimeZone());
        // Every 7 h 13 min 17 s, so that each hour of the day is visited: 6000 dates over 5 years.
        for (int i = 0; i < 6000; ++i, date = date.addSecs(7 * 3600 + 13 * 60 + 17)) {
            calc.setDate(date);
            for (int j = 0; j < 4; ++j) {
                const QDateTime last = (calc.*lasts[j])();
                const QDateTime next = (calc.*nexts[j])();
                if (last > date || last.secsTo(date) > month || next <= date ||
                    date.secsTo(next) > month)
                    QFAIL(qPrintable(date.toString(Qt::ISODate) + ": " +
                                     last.toString(Qt::ISODate) + ", " +
                                     next.toString(Qt::ISODate)));
            }
            if (calc.nextNewMoon() > date)
                QCOMPARE(calc.upcomingNewMoon(), calc.nextNewMoon());
            QCOMPARE(calc.previousPhases()[4], calc.currentPhases()[0]);
        }
    }

private:
    static void useTimeZone(const char *zone);
    static QDateTime utc(int y, int mo, int d, int h = 0, int mi = 0, int s = 0);
    static QString minutes(double jd);
};

void TestMoonCalc::useTimeZone(const char *zone)
{
    qputenv("TZ", zone);
    tzset();
}

QDateTime TestMoonCalc::utc(int y, int mo, int d, int h, int mi, int s)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), MoonCalc::defaultTimeZone());
}

// A Julian date as the universal-time clock reads it, to the minute.
QString TestMoonCalc::minutes(double jd)
{
    return MoonCalc::calendarDateForJulianDate(jd).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

VANTOREL_TEST_CORE_MAIN(TestMoonCalc)
#include "test_mooncalc.moc"
