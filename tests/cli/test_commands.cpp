#include "BuildInfo.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/moon/MoonCalc.h"
#include "core/sources/Node.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QtTest>

// The headless commands from the outside, as a script or a cron job runs them: no display, the
// time zone from TZ, exact texts on standard output and standard error, and the exit codes. What
// the commands share (help, version, usage errors) is checked once across all of them, then each
// command's own contract.
class TestCommands : public QObject {
    Q_OBJECT

private slots:
    void init();

    void answers_data();
    void answers();
    void fetch_data();
    void fetch();
    void report_data();
    void report();
    void moonJson();

private:
    struct Result {
        int code = -1;
        QByteArray out, err;
    };
    // Runs the program without a display in the working folder, in UTC unless a leading
    // "NAME=value" says otherwise; waiting in the event loop keeps a loopback server answering.
    Result run(QStringList arguments) const
    {
        QProcessEnvironment env = TestEnvironment::headlessEnvironment();
        env.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
        env.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_US.UTF-8"));
        while (arguments.value(0).contains(QLatin1Char('='))) {
            const QString setting = arguments.takeFirst();
            env.insert(setting.section('=', 0, 0), setting.section('=', 1));
        }
        QProcess process;
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(_work);
        process.start(QStringLiteral(VANTOREL_BINARY), arguments);
        if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 30000)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2,
                process.readAllStandardOutput(), process.readAllStandardError()};
    }
    // Dated (its modification time, the data's time) if a time is given.
    static void writeFile(const QString &path, const QByteArray &bytes, const char *dated = nullptr)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        QVERIFY(!dated ||
                (file.flush() && file.setFileTime(QDateTime::fromString(dated, Qt::ISODate),
                                                  QFileDevice::FileModificationTime)));
    }

    QString _definitions;
    QString _data;
    QString _work;
};

void TestCommands::init()
{
    TestEnvironment::resetState();
    _definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    _work = TestEnvironment::makeFolder(QStringLiteral("work"));
    QVERIFY(TestEnvironment::writePropertyList(
        _definitions + QStringLiteral("/DataAlerts.plist"),
        {{"Node0", TestEnvironment::nodeDict("RSGA.txt", "Daily")},
         {"Node1", TestEnvironment::nodeDict("WKHF.txt", "Weekly")},
         {"Node2", TestEnvironment::nodeDict("Forecast.txt", "Three-day forecast")},
         {"Node3", TestEnvironment::nodeDict("Missing.txt", "Missing")}}));
    writeFile(_data + "/RSGA.txt", ":Product: Daily\nIA. x", "2026-11-16T07:51:00Z");
    writeFile(_data + "/WKHF.txt", ":Product: Weekly\nx\ny\n", "2026-11-14T23:00:00+02:00");
    writeFile(_data + "/Forecast.txt", {}, "2026-11-16T06:00:00Z"); // and none for Missing.txt
    // Bulletin files in the working folder.
    writeFile(_work + "/RSGA.txt", ":Product: R\n:Issued: d\nIA. x\x96y");
    writeFile(_work + "/WKHF.txt", "a\nb\n\n# c\n");
    writeFile(_work + "/wkhf.txt", "a\nb\n# c");
    writeFile(_work + "/notes.txt", "\xA5 10\xA1 \xDB");
    QVERIFY(QDir(_work).mkdir("Forecast.txt"));
    QSettings().setValue(Node::lastUpdateKey("WKHF.txt"), "Monday, Nov 16 2026 at 05:57 PM");
}

void TestCommands::answers_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("text"); // found on standard output, or standard error if failed
    const auto row = [](const char *name, const QStringList &arguments, int code,
                        const char *text) {
        QTest::newRow(name) << arguments << code << QByteArray(text);
    };
    const QByteArray version = QByteArray("vantorel ") + BuildInfo::version + '\n';
    row("help", {"--help"}, 0, "moon: describe the Moon; now: print the space");
    row("version", {"-v"}, 0, version);
    row("unknown command", {"jupiter"}, 2, "vantorel: unknown command \"jupiter\"\n");
    for (const char *command :
         {"fetch [options] [GROUP...]", "report [options] NAME", "moon [options]"}) {
        const QString name = QString::fromLatin1(command).section(' ', 0, 0);
        const QByteArray usage = "Usage: vantorel " + QByteArray(command) + '\n';
        for (const char *help : {"--help", "-h", "--help-all"})
            QTest::addRow("%s %s", qPrintable(name), help) << QStringList{name, help} << 0 << usage;
        QTest::addRow("%s version", qPrintable(name)) << QStringList{name, "-v"} << 0 << version;
        QTest::addRow("%s unknown option", qPrintable(name))
            << QStringList{name, "--fast"} << 2 << QByteArray("'fast'");
    }
    row("unknown group", {"fetch", "Jupiter"}, 2, "unknown group \"Jupiter\"");
    row("timeout not a number", {"fetch", "--timeout", "soon"}, 2, "--timeout: \"soon\" is not a");
    row("not a folder", {"fetch", "--definitions", "/no/x"}, 2,
        "--definitions: \"/no/x\" is not a");
    row("option without value", {"fetch", "--data-dir"}, 2, "after '--data-dir'");
    row("empty data folder", {"fetch", "--data-dir", ""}, 2, "the folder name is empty");
    row("no report named", {"report"}, 2, "or use --list");
    row("unknown report", {"report", "Jupiter"}, 2, "\"Jupiter\" is neither a file nor");
    row("two reports", {"report", "a", "b"}, 2, "one bulletin at a time, not 2");
    row("list with a name", {"report", "--list", "a"}, 2, "--list takes no NAME");
    row("list with --as", {"report", "--list", "--as", "a"}, 2, "not to --list");
    row("empty --as", {"report", "--as", "", "a"}, 2, "--as: the file name is empty");
    row("30 February", {"moon", "--date", "2008-02-30"}, 2, "names a day that does not");
    row("hour 25", {"moon", "--date", "2008-01-01T25:00"}, 2, "names a time that does not");
    row("words", {"moon", "--date", "yesterday"}, 2, "is not a date; use YYYY-MM-DD");
    row("blank for T", {"moon", "--date", "2008-01-01 10:00"}, 2, "is not a date");
    row("short fields", {"moon", "--date", "2008-1-1"}, 2, "is not a date");
    row("offset given", {"moon", "--date", "2008-01-01T10:00Z"}, 2, "is not a date");
    row("clocks skip", {"TZ=America/New_York", "moon", "--date", "2024-03-10T02:30"}, 2, "skip");
    row("stray argument", {"moon", "tomorrow"}, 2, "unexpected argument \"tomorrow\"");
    row("no shared options", {"moon", "--data-dir", "x"}, 2, "'data-dir'");
    row("plain", {"moon", "--date", "2008-01-01"}, 0,
        "Moon Phase for January 01, 2008 12:00 AM\nPhase Percent: 77.03%\nIllumination: 43.65%\n"
        "Distance: 402,126.49 km\nAge: 22 days, 17 hours, 54 minutes\nNext Full Moon: January "
        "22, 2008 01:35 PM\nNext New Moon: January 08, 2008 11:37 AM\nLast Quarter\n");
    row("southern", {"moon", "--date", "2008-01-01", "--southern"}, 0, "Phase Percent: 22.97%\n");
    row("minutes", {"moon", "--date", "2008-08-01T06:30"}, 0, "for August 01, 2008 06:30 AM\n");
    row("seconds", {"moon", "--date", "2008-08-01T06:30:15", "--json"}, 0, "01T06:30:15+00:00\"");
    row("leap day", {"moon", "--date", "2024-02-29T23:59:59", "--json"}, 0, "29T23:59:59+00:00\"");
    // Five hours behind universal time all year: the local clock, and the Julian date of each.
    const QStringList behind{"TZ=Etc/GMT+5", "moon", "--date", "2008-01-01T00:00", "--json"};
    row("zone: date", behind, 0, "\"date\": \"2008-01-01T00:00:00-05:00\"");
    row("zone: Julian dates", behind, 0, "2454466.5,\n    \"julianDateGMT\": 2454466.708");
    row("zone: phases", behind, 0, "\"nextNewMoon\": \"2008-01-08T06:37:34-05:00\"");
}

void TestCommands::answers()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QByteArray, text);
    const Result result = run(arguments);
    QCOMPARE(result.code, code);
    QVERIFY2((code == 0 ? result.out : result.err).contains(text), result.out + result.err);
    QCOMPARE(code == 0 ? result.err : result.out, QByteArray());
    // A command's usage error names the command, then where its help is.
    const QByteArray word =
        arguments.filter(QRegularExpression("^(fetch|report|moon)$")).value(0).toUtf8();
    if (code == 2 && !word.isEmpty())
        QVERIFY(result.err.startsWith("vantorel " + word + ": ") &&
                result.err.endsWith("\nTry \"vantorel " + word + " --help\".\n"));
}

void TestCommands::fetch_data()
{
    QTest::addColumn<QStringList>("groups");
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("arrived");
    QTest::newRow("every group: a failure, the others arrive") << QStringList() << 1 << 6;
    QTest::newRow("named groups, any case") << QStringList{"alerts", "Earth"} << 0 << 3;
}

void TestCommands::fetch()
{
    QFETCH(QStringList, groups);
    QFETCH(int, code);
    QFETCH(int, arrived);
    TestHttpServer server;
    server.serve("/image", TestHttpServer::picture(50000));
    server.serve("/report", ":Product: Report\n:Issued: 2026 Nov 22\n");
    const auto node = [&](const QString &dest, const QString &name, const QString &path) {
        return TestEnvironment::nodeDict(dest, name, server.baseUrl(), path);
    };
    for (const QString name : {"Sun", "Graphs", "Aurora", "Earth"}) {
        QVariantMap domain{{"DomainName", name}, {"Node0", node(name + ".png", name, "image")}};
        if (name == "Sun")
            domain["Node1"] = node("sun2.png", "Sun Two", "gone");
        QVERIFY(TestEnvironment::writePropertyList(_definitions + "/Data" + name + ".plist",
                                                   {{"Domain0", domain}}));
    }
    QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataAlerts.plist",
                                               {{"Node0", node("RSGA.txt", "RSGA", "report")},
                                                {"Node1", node("WKHF.txt", "W", "report")}}));
    QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataNow.plist", {}));

    const QString data = _work + "/data"; // not there yet: fetch makes it
    const Result result = run(
        QStringList{"fetch", "--definitions", _definitions, "--data-dir", data, "--timeout", "5"} +
        groups);
    QCOMPARE(result.code, code);
    const QStringList out = QString::fromUtf8(result.out).split('\n', Qt::SkipEmptyParts);
    const QStringList err = QString::fromUtf8(result.err).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(out.size(), arrived);
    const QRegularExpression line(
        "^\\[\\d{4}/\\d\\d/\\d\\d \\d\\d:\\d\\d[AP]M\\] Download of \".+\" Successful$");
    for (const QString &entry : out)
        QVERIFY2(line.match(entry).hasMatch(), qPrintable(entry));
    QCOMPARE(err.size(), code); // the one failure
    for (const QString &entry : err) {
        QVERIFY(
            entry.contains("Download of \"Sun Two\" Failed: The server answered 404 Not Found. "));
        QVERIFY(entry.endsWith(server.url("gone")));
    }
    // What arrived is on disk byte for byte; what failed or was not asked for is not.
    QFile earth(data + "/Earth.png");
    QVERIFY(earth.open(QIODevice::ReadOnly));
    QCOMPARE(earth.readAll(), TestHttpServer::picture(50000));
    QVERIFY(!QFileInfo::exists(data + "/sun2.png"));
    QCOMPARE(server.requestCount("/image"), groups.isEmpty() ? 4 : 1);
    QCOMPARE(server.requestCount("/report"), 2);
    // The last update is remembered, as the window remembers it.
    QSettings settings;
    settings.sync();
    QVERIFY(settings.value("lastUpdateForNodeRSGA.txt").toString().contains(" at "));
}

void TestCommands::report_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("expected"); // on standard output, or on standard error if failed
    const auto row = [](const char *name, const QStringList &arguments, int code,
                        const char *text) {
        QTest::newRow(name) << arguments << code << QByteArray(text);
    };
    const char *notLoaded = "Data not loaded. Press \"Reload\" to download current data.\n";
    row("a file wins, by its own name", {"RSGA.txt"}, 0, "R\nIssued: d\n\n1A. x-y\n");
    row("--as another name", {"--as", "o.txt", "RSGA.txt"}, 0, "R\nIssued: d\nIA. x-y\n");
    row("highlights by the file's name", {"WKHF.txt"}, 0, "a b \nc \n");
    row("name compared exactly", {"wkhf.txt"}, 0, "a\nb\nc\n");
    row("--as chooses", {"--as", "WKHF.txt", "wkhf.txt"}, 0, "a b\nc\n");
    row("printed in UTF-8", {"notes.txt"}, 0, "\xE2\x80\xA2 10\xC2\xB0 \xE2\x82\xAC\n");
    row("stored, by title in any case", {"WEEKLY TITLE"}, 0, "Weekly x y \n");
    row("stored, by file name in any case, --as", {"--as", "x", "rsga.TXT"}, 0, "Daily\nIA. x\n");
    row("a folder is no bulletin, an empty copy none", {"Forecast.txt"}, 1, notLoaded);
    row("no stored copy", {"missing.txt"}, 1, notLoaded);
    row("no data folder", {"--data-dir", "nowhere", "rsga.txt"}, 1, notLoaded);
    row("list", {"--list"}, 0,
        "Title                     Data file     Last updated                     Data time\n"
        "Daily title               RSGA.txt      Unknown                          "
        "2026-11-16T07:51:00Z\n"
        "Weekly title              WKHF.txt      Monday, Nov 16 2026 at 05:57 PM  "
        "2026-11-14T21:00:00Z\n"
        "Three-day forecast title  Forecast.txt  Unknown                          "
        "2026-11-16T06:00:00Z\n"
        "Missing title             Missing.txt   Unknown                          -\n");
}

void TestCommands::report()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QByteArray, expected);
    const Result result =
        run(QStringList{"report", "--definitions", _definitions, "--data-dir", _data} + arguments);
    QCOMPARE(result.code, code);
    QCOMPARE(code == 0 ? result.out : result.err, expected);
    QCOMPARE(code == 0 ? result.err : result.out, QByteArray());
    // Reading changes nothing: no data folder is made, no last update stored.
    QVERIFY(!QFileInfo::exists(_work + "/nowhere"));
    QVERIFY(!QSettings().contains(Node::lastUpdateKey("RSGA.txt")));
}

void TestCommands::moonJson()
{
    const QByteArray out = run({"moon", "--date", "2008-01-01", "--json"}).out;
    const QJsonObject moon = QJsonDocument::fromJson(out).object();
    QCOMPARE(moon.size(), 33);
    // The worked example: every member as printed, to the precision that its value is known.
    // clang-format off
    for (const char *member : {
        "\"date\": \"2008-01-01T00:00:00+00:00\"", "\"julianDate\": 2454466.5,",
        "\"julianDateGMT\": 2454466.5,", "\"moonPhaseAsDouble\": 0.770257",
        "\"moonPhaseAsInteger\": 6,", "\"preciseMoonPhase\": 15,", "\"moonIllumination\": 0.4365",
        "\"moonDistanceKilometers\": 402126.49", "\"moonDistanceMiles\": 249318.42",
        "\"moonAngularDiameter\": 0.495262", "\"moonAgeOfPhase\": 45,", "\"moonAgeDays\": 22,",
        "\"moonAgeHours\": 17,", "\"moonAgeMinutes\": 54,", "\"solDistanceKilometers\": 14710009",
        "\"solDistanceMiles\": 9120206", "\"solAngularDiameter\": 0.54218",
        "\"isBlueMoon\": false,", "\"lastNewMoon\": \"2007-12-09T17:41",
        "\"lastFirstQuarter\": \"2007-12-17T10:17", "\"lastFullMoon\": \"2007-12-24T01:16",
        "\"lastLastQuarter\": \"2007-12-31T07:51", "\"currentNewMoon\": \"2007-12-09T17:41",
        "\"currentFirstQuarter\": \"2007-12-17T10:17", "\"currentFullMoon\": \"2007-12-24T01:16",
        "\"currentLastQuarter\": \"2007-12-31T07:51", "\"nextNewMoon\": \"2008-01-08T11:37",
        "\"nextFirstQuarter\": \"2008-01-15T19:4", "\"nextFullMoon\": \"2008-01-22T13:3",
        "\"nextLastQuarter\": \"2008-01-30T05:03"})
        QVERIFY2(out.contains(member), member);
    // clang-format on
    // Full double precision: the arrays hold exactly what the calculator computes.
    QCOMPARE(moon["previousPhases"][0].toDouble(), MoonCalc::getTruePhase(1334, 0.0));
    QCOMPARE(moon["currentPhases"][5].toDouble(), MoonCalc::getTruePhase(1336, 0.75));
    QCOMPARE(moon["nextPhases"][2].toDouble(), MoonCalc::getTruePhase(1336, 0.5));
    for (const char *array : {"previousPhases", "currentPhases", "nextPhases"})
        QCOMPARE(moon[array].toArray().size(), 6);

    // Without a date: the present moment.
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    const QJsonDocument now = QJsonDocument::fromJson(run({"moon", "--json"}).out);
    const QDateTime date = QDateTime::fromString(now["date"].toString(), Qt::ISODate);
    QVERIFY(date >= before && date <= QDateTime::currentDateTimeUtc().addSecs(1));
}

VANTOREL_TEST_CORE_MAIN(TestCommands)
#include "test_commands.moc"
