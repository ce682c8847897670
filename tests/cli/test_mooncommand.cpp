#include "TestEnvironment.h"

#include "core/moon/MoonCalc.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <ctime>

// "vantorel moon" from the outside, as a script would run it: no display, TZ and the locale from
// the environment, plain and JSON output, exit codes.
class TestMoonCommand : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void jsonForTheWorkedDate();
    void jsonSouthern();
    void plainOutput();
    void timeZoneFromTheEnvironment();
    void acceptedDates_data();
    void acceptedDates();
    void usageErrors_data();
    void usageErrors();
    void helpAndVersion_data();
    void helpAndVersion();
    void presentMomentByDefault();

private:
    struct Result {
        int code = -1;
        QString out;
        QString err;
    };
    static Result moon(const QStringList &arguments, const QByteArray &zone = "UTC");
    static QJsonObject json(const QStringList &arguments, const QByteArray &zone = "UTC");
};

TestMoonCommand::Result TestMoonCommand::moon(const QStringList &arguments, const QByteArray &zone)
{
    QProcess process;
    QProcessEnvironment env = TestEnvironment::headlessEnvironment();
    env.insert(QStringLiteral("TZ"), QString::fromLatin1(zone));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_US.UTF-8"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(VANTOREL_BINARY), QStringList{QStringLiteral("moon")} + arguments);
    Result result;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QJsonObject TestMoonCommand::json(const QStringList &arguments, const QByteArray &zone)
{
    const Result result = moon(arguments + QStringList{QStringLiteral("--json")}, zone);
    if (result.code != 0)
        qWarning().noquote() << "exit" << result.code << result.err;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(result.out.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        qWarning().noquote() << "not a JSON object:" << error.errorString() << result.out;
    return document.object();
}

void TestMoonCommand::initTestCase()
{
    // This process computes the expected phase instants, in the same zone as the command.
    qputenv("TZ", "UTC");
    tzset();
}

void TestMoonCommand::init()
{
    TestEnvironment::resetState();
}

void TestMoonCommand::jsonForTheWorkedDate()
{
    const QJsonObject moon = json({QStringLiteral("--date"), QStringLiteral("2008-01-01")});
    // clang-format off
    const QStringList keys = {
        "date", "julianDate", "julianDateGMT", "moonPhaseAsDouble", "moonPhaseAsInteger",
        "preciseMoonPhase", "moonIllumination", "moonDistanceKilometers", "moonDistanceMiles",
        "moonAngularDiameter", "moonAgeOfPhase", "moonAgeDays", "moonAgeHours", "moonAgeMinutes",
        "solDistanceKilometers", "solDistanceMiles", "solAngularDiameter", "isBlueMoon",
        "lastNewMoon", "lastFirstQuarter", "lastFullMoon", "lastLastQuarter", "currentNewMoon",
        "currentFirstQuarter", "currentFullMoon", "currentLastQuarter", "nextNewMoon",
        "nextFirstQuarter", "nextFullMoon", "nextLastQuarter", "previousPhases", "currentPhases",
        "nextPhases"};
    // clang-format on
    QStringList present = moon.keys();
    present.sort();
    QStringList wanted = keys;
    wanted.sort();
    QCOMPARE(present, wanted);

    QCOMPARE(moon["date"].toString(), QString("2008-01-01T00:00:00+00:00"));
    QCOMPARE(moon["julianDate"].toDouble(), 2454466.5);
    QCOMPARE(moon["julianDateGMT"].toDouble(), 2454466.5);
    QVERIFY(std::abs(moon["moonPhaseAsDouble"].toDouble() - 0.770257) <= 0.5e-6);
    QCOMPARE(moon["moonPhaseAsInteger"].toInt(), 6);
    QCOMPARE(moon["preciseMoonPhase"].toInt(), 15);
    QVERIFY(std::abs(moon["moonIllumination"].toDouble() - 0.4365) <= 0.5e-4);
    const double km = moon["moonDistanceKilometers"].toDouble();
    QVERIFY(std::abs(km - 402126.49) <= 0.005);
    QCOMPARE(moon["moonDistanceMiles"].toDouble(), 0.62 * km);
    QVERIFY(std::abs(moon["moonAngularDiameter"].toDouble() - 0.495262) <= 0.5e-6);
    QCOMPARE(moon["moonAgeOfPhase"].toInt(), 45);
    QCOMPARE(moon["moonAgeDays"].toInt(), 22);
    QCOMPARE(moon["moonAgeHours"].toInt(), 17);
    QCOMPARE(moon["moonAgeMinutes"].toInt(), 54);
    QVERIFY(std::abs(moon["solDistanceKilometers"].toDouble() - 147100098.0) <= 0.5);
    QCOMPARE(moon["solDistanceMiles"].toDouble(), 0.62 * moon["solDistanceKilometers"].toDouble());
    QVERIFY(std::abs(moon["solAngularDiameter"].toDouble() - 0.542183) <= 0.5e-6);
    QVERIFY(moon["isBlueMoon"].isBool());
    QCOMPARE(moon["isBlueMoon"].toBool(), false);

    QCOMPARE(moon["currentNewMoon"].toString().left(16), QString("2007-12-09T17:41"));
    QCOMPARE(moon["currentFirstQuarter"].toString().left(16), QString("2007-12-17T10:17"));
    QCOMPARE(moon["currentFullMoon"].toString().left(16), QString("2007-12-24T01:16"));
    QCOMPARE(moon["currentLastQuarter"].toString().left(16), QString("2007-12-31T07:51"));
    QCOMPARE(moon["lastLastQuarter"].toString().left(16), QString("2007-12-31T07:51"));
    QCOMPARE(moon["nextNewMoon"].toString().left(16), QString("2008-01-08T11:37"));
    QVERIFY(moon["nextNewMoon"].toString().endsWith("+00:00"));
    QCOMPARE(moon["nextNewMoon"].toString().size(), 25);

    // Full double precision: the arrays hold exactly what the calculator computes.
    const QJsonArray current = moon["currentPhases"].toArray();
    QCOMPARE(current.size(), 6);
    QCOMPARE(current[0].toDouble(), MoonCalc::getTruePhase(1335, 0.0));
    QCOMPARE(current[1].toDouble(), MoonCalc::getTruePhase(1335, 0.25));
    QCOMPARE(current[5].toDouble(), MoonCalc::getTruePhase(1336, 0.75));
    const QJsonArray previous = moon["previousPhases"].toArray();
    QCOMPARE(previous.size(), 6);
    QCOMPARE(previous[0].toDouble(), MoonCalc::getTruePhase(1334, 0.0));
    const QJsonArray next = moon["nextPhases"].toArray();
    QCOMPARE(next.size(), 6);
    QCOMPARE(next[2].toDouble(), MoonCalc::getTruePhase(1336, 0.5));
}

void TestMoonCommand::jsonSouthern()
{
    const QJsonObject moon = json(
        {QStringLiteral("--date"), QStringLiteral("2008-01-01"), QStringLiteral("--southern")});
    QVERIFY(std::abs(moon["moonPhaseAsDouble"].toDouble() - 0.229743) <= 0.5e-6);
    QCOMPARE(moon["moonPhaseAsInteger"].toInt(), 2);
    QCOMPARE(moon["moonAgeOfPhase"].toInt(), 15);
    QCOMPARE(moon["moonAgeDays"].toInt(), 6);
    QCOMPARE(moon["moonAgeHours"].toInt(), 18);
    QCOMPARE(moon["moonAgeMinutes"].toInt(), 49);
    QVERIFY(std::abs(moon["moonDistanceKilometers"].toDouble() - 402126.49) <= 0.005);
}

void TestMoonCommand::plainOutput()
{
    const Result result = moon({QStringLiteral("--date"), QStringLiteral("2008-01-01")});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.err.isEmpty(), qPrintable(result.err));
    QVERIFY(result.out.endsWith(QLatin1Char('\n')));
    const QStringList lines = result.out.trimmed().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 8);
    QCOMPARE(lines.at(0), QString("Moon Phase for January 01, 2008 12:00 AM"));
    QCOMPARE(lines.at(1), QString("Phase Percent: 77.03%"));
    QCOMPARE(lines.at(2), QString("Illumination: 43.65%"));
    QCOMPARE(lines.at(3), QString("Distance: 402,126.49 km"));
    QCOMPARE(lines.at(4), QString("Age: 22 days, 17 hours, 54 minutes"));
    QVERIFY(lines.at(5).startsWith("Next Full Moon: January 22, 2008 "));
    QCOMPARE(lines.at(6), QString("Next New Moon: January 08, 2008 11:37 AM"));
    QCOMPARE(lines.at(7), QString("Last Quarter"));
}

void TestMoonCommand::timeZoneFromTheEnvironment()
{
    // Five hours behind universal time all year.
    const QJsonObject moon =
        json({QStringLiteral("--date"), QStringLiteral("2008-01-01T00:00")}, "Etc/GMT+5");
    QCOMPARE(moon["date"].toString(), QString("2008-01-01T00:00:00-05:00"));
    QCOMPARE(moon["julianDate"].toDouble(), 2454466.5);
    QCOMPARE(moon["julianDateGMT"].toDouble(), 2454466.5 + 5.0 / 24.0);
    // The new moon of 2008-01-08 11:37 universal time, on the local clock.
    QCOMPARE(moon["nextNewMoon"].toString().left(16), QString("2008-01-08T06:37"));
    QVERIFY(moon["nextNewMoon"].toString().endsWith("-05:00"));
}

void TestMoonCommand::acceptedDates_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("date");
    QTest::newRow("day") << "2008-08-01"
                         << "2008-08-01T00:00:00+00:00";
    QTest::newRow("minutes") << "2008-08-01T06:30"
                             << "2008-08-01T06:30:00+00:00";
    QTest::newRow("seconds") << "2008-08-01T06:30:15"
                             << "2008-08-01T06:30:15+00:00";
    QTest::newRow("leap day") << "2024-02-29T23:59:59"
                              << "2024-02-29T23:59:59+00:00";
}

void TestMoonCommand::acceptedDates()
{
    QFETCH(QString, argument);
    QFETCH(QString, date);
    QCOMPARE(json({QStringLiteral("--date"), argument})["date"].toString(), date);
}

void TestMoonCommand::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("reason");
    const QByteArray utc("UTC");
    QTest::newRow("month 13") << QStringList{"--date", "2008-13-01"} << utc << "does not exist";
    QTest::newRow("30 February") << QStringList{"--date", "2008-02-30"} << utc << "does not exist";
    QTest::newRow("hour 25") << QStringList{"--date", "2008-01-01T25:00"} << utc
                             << "does not exist";
    QTest::newRow("words") << QStringList{"--date", "yesterday"} << utc << "YYYY-MM-DD";
    QTest::newRow("blank for T") << QStringList{"--date", "2008-01-01 10:00"} << utc
                                 << "YYYY-MM-DD";
    QTest::newRow("short fields") << QStringList{"--date", "2008-1-1"} << utc << "YYYY-MM-DD";
    QTest::newRow("offset given") << QStringList{"--date", "2008-01-01T10:00Z"} << utc
                                  << "YYYY-MM-DD";
    QTest::newRow("empty") << QStringList{"--date", ""} << utc << "YYYY-MM-DD";
    QTest::newRow("skipped by the clocks")
        << QStringList{"--date", "2024-03-10T02:30"} << QByteArray("America/New_York") << "skip";
    QTest::newRow("no value") << QStringList{"--date"} << utc << "value";
    QTest::newRow("unknown option") << QStringList{"--frobnicate"} << utc << "frobnicate";
    QTest::newRow("stray argument") << QStringList{"tomorrow"} << utc << "tomorrow";
}

void TestMoonCommand::usageErrors()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, zone);
    QFETCH(QString, reason);
    const Result result = moon(arguments, zone);
    QCOMPARE(result.code, 2);
    QVERIFY(result.out.isEmpty());
    QVERIFY2(result.err.startsWith("vantorel moon: "), qPrintable(result.err));
    QVERIFY2(result.err.contains(reason), qPrintable(result.err));
    QVERIFY(result.err.contains("vantorel moon --help"));
}

void TestMoonCommand::helpAndVersion_data()
{
    QTest::addColumn<QString>("flag");
    QTest::addColumn<QString>("expected");
    QTest::newRow("help") << "--help"
                          << "--southern";
    QTest::newRow("short help") << "-h"
                                << "--json";
    QTest::newRow("help with all options") << "--help-all"
                                           << "--date <DATE>";
    QTest::newRow("version") << "--version"
                             << "vantorel ";
}

void TestMoonCommand::helpAndVersion()
{
    QFETCH(QString, flag);
    QFETCH(QString, expected);
    const Result result = moon({flag});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains(expected), qPrintable(result.out));
    QVERIFY(result.err.isEmpty());
}

void TestMoonCommand::presentMomentByDefault()
{
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    const QJsonObject moon = json({});
    const QDateTime after = QDateTime::currentDateTimeUtc().addSecs(1);
    const QDateTime date = QDateTime::fromString(moon["date"].toString(), Qt::ISODate);
    QVERIFY(date.isValid());
    QVERIFY(date >= before && date <= after);
}

VANTOREL_TEST_CORE_MAIN(TestMoonCommand)
#include "test_mooncommand.moc"
