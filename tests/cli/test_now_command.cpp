#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/now/NowHistory.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

// "vantorel now" and "vantorel watch --once" from the outside: data files written to a data
// folder, the command run as a user would, its JSON members, the X-ray class and the exit status.
class TestNowCommand : public QObject {
    Q_OBJECT

private slots:
    void init();
    void jsonContract();
    void xrayClass_data();
    void xrayClass();
    void exitStatus_data();
    void exitStatus();
    void watchOnce();
    void fetchFeedsTheHistory();

private:
    struct Result {
        int code = -1;
        QJsonObject json;
        QString out;
    };
    Result now(const QStringList &extra = {}, const QString &command = "now") const;
    void write(const QString &file, const QString &json) const;
    void writeFreshData() const;
    QString _data;
    QString _definitions;
};

namespace {

const QStringList kKinds = {"kp",  "kp-forecast", "xray",   "solar-wind",
                            "imf", "protons",     "scales", "messages"};

QDateTime base;

// A time so many seconds before the test began (after, when negative), as the files write it.
QString ago(qint64 seconds, const char *zone = "")
{
    return base.addSecs(-seconds).toString("yyyy-MM-ddTHH:mm:ss") + QLatin1String(zone);
}

} // namespace

void TestNowCommand::init()
{
    TestEnvironment::resetState();
    base = QDateTime::currentDateTimeUtc();
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    _definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    QVariantMap root;
    for (int i = 0; i < kKinds.size(); ++i) {
        QVariantMap node = TestEnvironment::nodeDict(kKinds[i] + ".json");
        node.insert(QStringLiteral("DataKind"), kKinds[i]);
        root.insert(QStringLiteral("Node%1").arg(i), node);
    }
    QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataNow.plist", root));
}

TestNowCommand::Result TestNowCommand::now(const QStringList &extra, const QString &command) const
{
    QProcess process;
    process.setProcessEnvironment(TestEnvironment::headlessEnvironment());
    process.start(QStringLiteral(VANTOREL_BINARY),
                  QStringList{command, "--data-dir", _data, "--definitions", _definitions} + extra);
    Result result;
    if (!process.waitForFinished(30000))
        return result;
    result.code = process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.json = QJsonDocument::fromJson(result.out.toUtf8()).object();
    return result;
}

void TestNowCommand::write(const QString &file, const QString &json) const
{
    QFile out(QDir(_data).filePath(file));
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(json.toUtf8());
}

void TestNowCommand::writeFreshData() const
{
    write("kp.json", QString(R"([{"time_tag":"%1","Kp":2.33}])").arg(ago(4 * 3600)));
    // Observed, then estimated (the newest not after now), then predicted: within the next day
    // 6.67, later 8.
    write("kp-forecast.json",
          QString(R"([{"time_tag":"%1","kp":3,"observed":"observed","noaa_scale":null},
                     {"time_tag":"%2","kp":5.33,"observed":"estimated","noaa_scale":"G1"},
                     {"time_tag":"%3","kp":6.67,"observed":"predicted","noaa_scale":"G2"},
                     {"time_tag":"%4","kp":8,"observed":"predicted","noaa_scale":"G4"}])")
              .arg(ago(3 * 3600), ago(600), ago(-3 * 3600), ago(-30 * 3600)));
    // The bands interleaved; the day's highest long-band flux three hours ago, an older one
    // higher still.
    const QString row = R"({"time_tag":"%1","satellite":18,"flux":%2,"energy":"%3"})";
    write("xray.json", "[" +
                           QStringList{row.arg(ago(25 * 3600, "Z"), "5e-4", "0.1-0.8nm"),
                                       row.arg(ago(3 * 3600, "Z"), "2.3e-4", "0.1-0.8nm"),
                                       row.arg(ago(120, "Z"), "2.58e-7", "0.1-0.8nm"),
                                       row.arg(ago(120, "Z"), "3e-8", "0.05-0.4nm")}
                               .join(',') +
                           "]");
    // Newest first: an inactive spacecraft's row, an active one with a fill value, a good one.
    write("solar-wind.json",
          QString(R"([{"time_tag":"%1","active":false,"source":"ACE","proton_speed":380,
                       "proton_density":3,"proton_temperature":50000},
                      {"time_tag":"%1","active":true,"source":"SOLAR1","proton_speed":455,
                       "proton_density":-9999,"proton_temperature":90000,"max_data_flag":-9999},
                      {"time_tag":"%2","active":true,"source":"SOLAR1","proton_speed":450.5,
                       "proton_density":4.2,"proton_temperature":85000,"max_data_flag":-9999}])")
              .arg(ago(60), ago(120)));
    write("imf.json", QString(R"([{"time_tag":"%1","active":true,"source":"SOLAR1","bt":7.1,
                                   "bz_gsm":-5.5}])")
                          .arg(ago(60)));
    write("protons.json",
          QString(R"([{"time_tag":"%1","satellite":18,"flux":1.5,"energy":">=10 MeV"},
                                      {"time_tag":"%1","satellite":18,"flux":9,"energy":">=1 MeV"}])")
              .arg(ago(300, "Z")));
    const QString day = R"("%1":{"DateStamp":"%2","TimeStamp":"%3","R":{"Scale":%4,"Text":null,
        "MinorProb":%5,"MajorProb":%6},"S":{"Scale":%4,"Text":null,"Prob":%7},
        "G":{"Scale":"%8","Text":"minor"}})";
    const QDate today = base.date();
    write("scales.json",
          "{" +
              QStringList{day.arg("-1", today.addDays(-1).toString(Qt::ISODate), "00:00:00",
                                  "\"0\"", "null", "null", "null", "0"),
                          day.arg("0", today.toString(Qt::ISODate), "12:00:00", "\"1\"", "null",
                                  "null", "null", "2"),
                          day.arg("1", today.addDays(1).toString(Qt::ISODate), "00:00:00", "null",
                                  "\"25\"", "\"5\"", "\"1\"", "1")}
                  .join(',') +
              "}");
    write("messages.json", QString(R"([{"product_id":"K05A","issue_datetime":"%1.603",
                       "message":"Space Weather Message Code: ALTK05\r\nSerial Number: 2033\r\nIssue Time: 2026 May 01 0715 UTC\r\n\r\nALERT: Geomagnetic K-index of 5 \r\nThreshold Reached: 2026 May 01 0715 UTC\r\n"},
                      {"product_id":"EF3A","issue_datetime":"%2",
                       "message":"Space Weather Message Code: ALTEF3\r\nSerial Number: 3667\r\n\r\nCONTINUED ALERT: Electron 2MeV Integral Flux exceeded 1000pfu\r\n"}])")
                               .arg(ago(7200).replace('T', ' '), ago(3600)));
}

void TestNowCommand::jsonContract()
{
    writeFreshData();
    const Result r = now({"--json"});
    QCOMPARE(r.code, 0);
    const QJsonObject &j = r.json;
    QCOMPARE(j.keys(), (QStringList{"generated", "imf", "kp", "kpForecastMax", "messages",
                                    "protons", "scales", "solarWind", "xray", "xrayMax24h"}));
    QVERIFY(j["generated"].toString().endsWith('Z'));
    const QJsonObject kp = j["kp"].toObject();
    QCOMPARE(kp.keys(),
             (QStringList{"ageSeconds", "estimated", "gScale", "stale", "time", "value"}));
    QCOMPARE(kp["value"].toDouble(), 5.33);
    QVERIFY(kp["estimated"].toBool());
    QCOMPARE(kp["gScale"].toInt(), 1);
    QCOMPARE(kp["time"].toString(), ago(600, "Z"));
    QVERIFY(qAbs(kp["ageSeconds"].toInteger() - 600) <= 5);
    QCOMPARE(j["kpForecastMax"].toObject(),
             (QJsonObject{{"value", 6.67}, {"time", ago(-3 * 3600, "Z")}, {"gScale", 2}}));
    const QJsonObject xray = j["xray"].toObject();
    QCOMPARE(xray["class"].toString(), QString("B2.5"));
    QCOMPARE(xray["satellite"].toInt(), 18);
    QCOMPARE(xray["stale"].toBool(), false);
    QCOMPARE(j["xrayMax24h"].toObject(),
             (QJsonObject{{"flux", 2.3e-4}, {"class", "X2.3"}, {"time", ago(3 * 3600, "Z")}}));
    const QJsonObject wind = j["solarWind"].toObject();
    QCOMPARE(wind.keys(), (QStringList{"ageSeconds", "density", "source", "speed", "stale",
                                       "temperature", "time"}));
    QCOMPARE(wind["speed"].toDouble(), 450.5);
    QCOMPARE(wind["source"].toString(), QString("SOLAR1"));
    QCOMPARE(wind["time"].toString(), ago(120, "Z"));
    QCOMPARE(j["imf"].toObject()["bz"].toDouble(), -5.5);
    QCOMPARE(j["protons"].toObject()["flux"].toDouble(), 1.5);
    QCOMPARE(j["scales"].toObject(),
             (QJsonObject{{"R", 1},
                          {"S", 1},
                          {"G", 2},
                          {"time", base.date().toString(Qt::ISODate) + "T12:00:00Z"},
                          {"forecast", QJsonArray{QJsonObject{
                                           {"date", base.date().addDays(1).toString(Qt::ISODate)},
                                           {"G", 1},
                                           {"rMinorProb", 25},
                                           {"rMajorProb", 5},
                                           {"sProb", 1}}}}}));
    QCOMPARE(j["messages"].toArray(),
             (QJsonArray{QJsonObject{{"code", "ALTEF3"},
                                     {"serial", 3667},
                                     {"issued", ago(3600, "Z")},
                                     {"title", "CONTINUED ALERT: Electron 2MeV Integral Flux "
                                               "exceeded 1000pfu"}},
                         QJsonObject{{"code", "ALTK05"},
                                     {"serial", 2033},
                                     {"issued", ago(7200, "Z")},
                                     {"title", "ALERT: Geomagnetic K-index of 5"}}}));
}

void TestNowCommand::xrayClass_data()
{
    QTest::addColumn<QString>("flux");
    QTest::addColumn<QString>("expected");
    QTest::newRow("B, cut not rounded") << "2.58e-7"
                                        << "B2.5";
    QTest::newRow("C, not rounded up to C10") << "9.96e-6"
                                              << "C9.9";
    QTest::newRow("X") << "2.3e-4"
                       << "X2.3";
    // 1.1e-5 / 1e-5 is 1.0999999999999999 in binary floating point.
    QTest::newRow("M, not cut down to M1.0") << "1.1e-5"
                                             << "M1.1";
}

void TestNowCommand::xrayClass()
{
    QFETCH(QString, flux);
    QFETCH(QString, expected);
    write("xray.json",
          QString(R"([{"time_tag":"%1","satellite":16,"flux":%2,"energy":"0.1-0.8nm"}])")
              .arg(ago(60, "Z"), flux));
    const Result r = now({"--json"});
    QCOMPARE(r.json["xray"].toObject()["class"].toString(), expected);
    // Everything else is missing: null members, and not all is well.
    QVERIFY(r.json["kp"].isNull() && r.json["messages"].isNull());
    QCOMPARE(r.code, 1);
}

void TestNowCommand::exitStatus_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("stale");

    QTest::newRow("all current, plain") << ""
                                        << "" << QStringList{} << 0 << "";
    QTest::newRow("K index 7 h old")
        << "kp-forecast.json"
        << QString(R"([{"time_tag":"%1","kp":2,"observed":"observed"}])").arg(ago(7 * 3600))
        << QStringList{"--json"} << 1 << "kp";
    QTest::newRow("solar wind 20 min old")
        << "solar-wind.json"
        << QString(R"([{"time_tag":"%1","active":true,"source":"SOLAR1","proton_speed":400,
                        "proton_density":5,"proton_temperature":1e5}])")
               .arg(ago(1200))
        << QStringList{"--json"} << 1 << "solarWind";
    QTest::newRow("unknown option") << ""
                                    << "" << QStringList{"--jsn"} << 2 << "";
    QTest::newRow("unexpected argument") << ""
                                         << "" << QStringList{"now"} << 2 << "";
}

void TestNowCommand::exitStatus()
{
    QFETCH(QString, file);
    QFETCH(QString, replacement);
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, stale);
    writeFreshData();
    if (!file.isEmpty())
        write(file, replacement);
    const Result r = now(arguments);
    QCOMPARE(r.code, code);
    if (!stale.isEmpty())
        QCOMPARE(r.json[stale].toObject()["stale"].toBool(), true);
}

void TestNowCommand::watchOnce()
{
    writeFreshData();
    const Result first = now({"--once", "--json"}, "watch");
    QCOMPARE(first.code, 0);
    QList<QJsonObject> events;
    for (const QString &line : first.out.split('\n', Qt::SkipEmptyParts))
        events << QJsonDocument::fromJson(line.toUtf8()).object();
    // The two alerts, then the K index of 5.33; the X2.3 flare three hours ago is older than a
    // first look goes.
    QCOMPARE(events.size(), 3);
    QCOMPARE(events[0],
             (QJsonObject{{"rule", "message"},
                          {"time", ago(7200, "Z")},
                          {"title", "ALERT: Geomagnetic K-index of 5"},
                          {"detail", "Alert ALTK05, serial 2033, issued " +
                                         base.addSecs(-7200).toString("HH:mm") + " UTC."}}));
    QCOMPARE(events[1]["rule"].toString() + events[2]["rule"].toString(), "messagekp");
    // Recorded as delivered: the same data again tells nothing new.
    const Result again = now({"--once", "--json"}, "watch");
    QCOMPARE(again.code, 0);
    QCOMPARE(again.out, QString());
    QCOMPARE(now({"--once", "now"}, "watch").code, 2);
}

// `vantorel fetch Now` downloads the group and merges what it brought into the history before
// it exits.
void TestNowCommand::fetchFeedsTheHistory()
{
    TestHttpServer server;
    server.serve("/kp.json", QString(R"([{"time_tag":"%1","Kp":2.33},{"time_tag":"%2","Kp":4}])")
                                 .arg(ago(4 * 3600), ago(3600))
                                 .toUtf8());
    QVariantMap node = TestEnvironment::nodeDict("kp.json", "K", server.baseUrl(), "kp.json");
    node.insert("DataKind", "kp");
    QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataNow.plist", {{"Node0", node}}));
    QProcess process;
    process.setProcessEnvironment(TestEnvironment::headlessEnvironment());
    process.start(VANTOREL_BINARY,
                  {"fetch", "Now", "--data-dir", _data, "--definitions", _definitions});
    QVERIFY(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 30000));
    QCOMPARE(process.exitCode(), 0);
    const NowSamples kept = NowHistory(NowHistory::pathInFolder(_data))
                                .samples("kp", "kp", 0, std::numeric_limits<qint64>::max());
    QCOMPARE(kept.size(), 2);
    QCOMPARE(kept.last().value, 4.0);
}

VANTOREL_TEST_CORE_MAIN(TestNowCommand)
#include "test_now_command.moc"
