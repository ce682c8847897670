#include "RecordingDelegate.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/now/NowFormat.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <zlib.h>

// The providers' JSON files: each kind's traps, and a download whose shape is wrong never
// replacing the last good file.
class TestNowData : public QObject {
    Q_OBJECT

private slots:
    // Far from UTC, so that a time without a zone mark read as local time shows.
    void initTestCase() { qputenv("TZ", "America/Denver"); }
    void init() { TestEnvironment::resetState(); }
    void parsers_data();
    void parsers();
    void download_data();
    void download();
    void shippedDefinitions();
};

namespace {

const QByteArray kKp = R"([{"time_tag":"2026-05-01T00:00:00","Kp":2.33,"a_running":9},
                           {"time_tag":"2026-05-01T03:00:00","Kp":3,"a_running":15}])";

// Samples as "series@HH:MM=value/text", the text's first line only; or "! reason".
QString describe(const QString &kind, const QByteArray &json)
{
    QString problem;
    const std::optional<NowSamples> samples = NowFormat::parse(kind, json, &problem);
    if (!samples)
        return QStringLiteral("! ") + problem;
    QStringList parts;
    for (const NowSample &s : *samples) {
        const QString text = s.text.section(QRegularExpression(QStringLiteral("[\r\n]")), 0, 0);
        parts << QStringLiteral("%1@%2=%3%4")
                     .arg(s.series,
                          QDateTime::fromSecsSinceEpoch(s.time, Qt::UTC).toString("HH:mm"),
                          QString::number(s.value), text.isEmpty() ? QString() : "/" + text);
    }
    return parts.join(QStringLiteral(" | "));
}

QByteArray gzip(const QByteArray &plain)
{
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    QByteArray out(qsizetype(deflateBound(&stream, uLong(plain.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(plain.data()));
    stream.avail_in = uInt(plain.size());
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return out;
}

// An aurora forecast as the provider writes it: every point of the grid, longitude first, then
// latitude, with a few values set; `points` cuts it short or runs it long.
QByteArray ovation(int points = 360 * 181, const char *value = "9")
{
    QByteArray json = R"({"Observation Time": "2026-05-01T07:51:00Z", "Forecast Time": )"
                      R"("2026-05-01T08:41:00Z", "Data Format": "[Longitude, Latitude, Aurora]", )"
                      R"("coordinates": [)";
    for (int i = 0; i < points; ++i) {
        const int lon = i / 181 % 360, lat = i % 181 - 90;
        json += QByteArray(i ? ", [" : "[") + QByteArray::number(lon) + ", " +
                QByteArray::number(lat) + ", " + (lon == 350 && lat == 64 ? value : "0") + "]";
    }
    return json + R"(], "type": "MultiPoint"})";
}

} // namespace

void TestNowData::parsers_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");

    QTest::newRow("kp: objects, no zone mark is UTC")
        << "kp" << kKp << "kp@00:00=2.33 | kp@03:00=3";
    QTest::newRow("kp: the shape before 31 March 2026")
        << "kp"
        << QByteArray(R"([["time_tag","Kp","a_running"],["2026-03-30 00:00:00.000","2.33","9"]])")
        << "! the rows are arrays, not objects";
    QTest::newRow("kp: the last row changed")
        << "kp" << QByteArray(R"([{"time_tag":"2026-05-01T00:00:00","Kp":2},
                                  {"time_tag":"2026-05-01T03:00:00","kp_index":2}])")
        << "! no \"Kp\" in the rows";
    QTest::newRow("kp: no rows") << "kp" << QByteArray("[ ]") << "! no rows";
    QTest::newRow("kp: cut short")
        << "kp" << kKp.left(kKp.size() - 20) << "! not JSON, or cut short";
    QTest::newRow("kp: a web page")
        << "kp" << QByteArray("<!DOCTYPE html><html></html>") << "! not a JSON array";
    QTest::newRow("kp: not a number")
        << "kp" << QByteArray(R"([{"time_tag":"2026-05-01T00:00:00","Kp":"high"}])")
        << "! \"Kp\" is not a number";
    QTest::newRow("kp: not a time")
        << "kp" << QByteArray(R"([{"time_tag":"today","Kp":1}])") << "! \"time_tag\" is not a time";
    QTest::newRow("kp-forecast: lower-case kp, with its status")
        << "kp-forecast"
        << QByteArray(R"([{"time_tag":"2026-05-01T06:00:00","kp":5.33,"observed":"predicted",
                           "noaa_scale":"G1"},
                          {"time_tag":"2026-05-01T00:00:00","kp":3.67,"observed":"observed",
                           "noaa_scale":null}])")
        << "kp@00:00=3.67/observed | kp@06:00=5.33/predicted";
    QTest::newRow("kp-forecast: an upper-case Kp")
        << "kp-forecast" << kKp << "! no \"kp\" in the rows";
    QTest::newRow("xray: two bands interleaved, zone mark Z")
        << "xray" << QByteArray(R"([{"time_tag":"2026-05-01T00:00:00Z","satellite":18,"flux":1e-8,
                           "observed_flux":1e-8,"electron_correction":0,
                           "electron_contaminaton":false,"energy":"0.05-0.4nm"},
                          {"time_tag":"2026-05-01T00:00:00Z","satellite":18,"flux":2.5e-7,
                           "observed_flux":2.6e-7,"electron_correction":0,
                           "electron_contaminaton":false,"energy":"0.1-0.8nm"}])")
        << "0.05-0.4nm@00:00=1e-08/18 | 0.1-0.8nm@00:00=2.5e-07/18";
    // Newest first; the newest row an inactive spacecraft's; -9999 in a measured value is no
    // measurement, in a flag field it means nothing.
    QTest::newRow("solar-wind: newest first, inactive rows, fill values")
        << "solar-wind"
        << QByteArray(R"([{"time_tag":"2026-05-01T00:02:00","active":false,"source":"ACE",
                           "proton_speed":380,"proton_density":3,"proton_temperature":5e4},
                          {"time_tag":"2026-05-01T00:02:00","active":true,"source":"SOLAR1",
                           "proton_speed":410.5,"proton_density":-9999,"proton_temperature":9e4,
                           "max_data_flag":-9999},
                          {"time_tag":"2026-05-01T00:01:00","active":true,"source":"SOLAR1",
                           "proton_speed":400,"proton_density":5,"proton_temperature":null,
                           "max_data_flag":-9999}])")
        << "speed@00:01=400/SOLAR1 | density@00:01=5/SOLAR1 | speed@00:02=410.5/SOLAR1 | "
           "temperature@00:02=90000/SOLAR1";
    QTest::newRow("solar-wind: no active flag")
        << "solar-wind" << QByteArray(R"([{"time_tag":"2026-05-01T00:00:00","proton_speed":400,
                           "proton_density":5,"proton_temperature":1}])")
        << "! no \"active\" in the rows";
    QTest::newRow("imf: an offset zone mark")
        << "imf"
        << QByteArray(R"([{"time_tag":"2026-05-01T00:30:00+02:00","active":true,"source":"SOLAR1",
                           "bt":5.5,"bz_gsm":-3.2}])")
        << "bt@22:30=5.5/SOLAR1 | bz@22:30=-3.2/SOLAR1";
    QTest::newRow("protons: only >=10 MeV")
        << "protons"
        << QByteArray(
               R"([{"time_tag":"2026-05-01T00:05:00Z","satellite":18,"flux":3.1,"energy":">=1 MeV"},
                          {"time_tag":"2026-05-01T00:05:00Z","satellite":18,"flux":0.42,"energy":">=10 MeV"},
                          {"time_tag":"2026-05-01T00:05:00Z","satellite":18,"flux":0.1,"energy":">=100 MeV"}])")
        << ">=10 MeV@00:05=0.42/18";
    QTest::newRow("f107: objects")
        << "f107" << QByteArray(R"([{"time_tag":"2026-05-01T20:00:00","flux":151.2}])")
        << "f107@20:00=151.2";
    QTest::newRow("messages: CR LF text, fractional seconds")
        << "messages"
        << QByteArray(R"([{"product_id":"K05A","issue_datetime":"2026-05-01 07:15:51.603",
                           "message":"Space Weather Message Code: ALTK05\r\nSerial Number: 2033\r\n"}])")
        << "K05A@07:15=2033/Space Weather Message Code: ALTK05";
    QTest::newRow("messages: a quiet day") << "messages" << QByteArray("[]") << "";
    QTest::newRow("ovation: the times, the highest value of the grid")
        << "ovation" << ovation() << "observation@07:51=nan | forecast@08:41=9/predicted";
    QTest::newRow("ovation: a point short")
        << "ovation" << ovation(360 * 181 - 1) << "! the grid has 65159 points, not 65160";
    QTest::newRow("ovation: a value that is no number")
        << "ovation" << ovation(360 * 181, "null")
        << "! the coordinates are not [longitude, latitude, value] rows";
    QTest::newRow("scales: an array") << "scales" << kKp << "! not a JSON object";
    QTest::newRow("scales: no entry for today")
        << "scales" << QByteArray(R"({"1":{"DateStamp":"2026-05-02","TimeStamp":"00:00:00"}})")
        << "! no entry \"0\"";
}

void TestNowData::parsers()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, json);
    QFETCH(QString, expected);
    QCOMPARE(describe(kind, json), expected);
    // The quick check that guards downloads agrees with the full reading, and so does the time it
    // reads on the way: the newest sample's, a forecast's predictions aside.
    std::optional<qint64> newest;
    QCOMPARE(NowFormat::shapeProblem(kind, json, &newest).isEmpty(), !expected.startsWith('!'));
    std::optional<qint64> measured;
    for (const NowSample &sample : NowFormat::parse(kind, json).value_or(NowSamples()))
        if (sample.text != QLatin1String("predicted"))
            measured = std::max(measured.value_or(sample.time), sample.time);
    QCOMPARE(newest, measured);
}

void TestNowData::download_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QString>("failure");

    // The declared length is the compressed size: the length check counts the bytes on the wire.
    QTest::newRow("gzip") << gzip(kKp) << QByteArray("gzip") << QString();
    QTest::newRow("plain") << kKp << QByteArray() << QString();
    QTest::newRow("changed shape")
        << QByteArray(R"([{"time_tag":"2026-05-01T00:00:00","Kp_index":2}])") << QByteArray()
        << "the file's format is not the one expected (no \"Kp\" in the rows)";
    QByteArray damaged = gzip(kKp);
    damaged[damaged.size() / 2] = char(damaged[damaged.size() / 2] ^ 0x55);
    QTest::newRow("damaged gzip")
        << damaged << QByteArray("gzip")
        << "the file's format is not the one expected (the compressed data is damaged or cut "
           "short)";
}

void TestNowData::download()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, encoding);
    QFETCH(QString, failure);

    TestHttpServer server;
    TestHttpServer::Script script;
    script.chunks = {body};
    if (!encoding.isEmpty())
        script.extraHeaders = {{"Content-Encoding", encoding}};
    server.route("/kp.json", script);
    const QString folder = TestEnvironment::makeFolder(QStringLiteral("data"));
    QFile old(QDir(folder).filePath(QStringLiteral("NowKp.json")));
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write("last good") == 9);
    old.close();

    QVariantMap dict = TestEnvironment::nodeDict(QStringLiteral("NowKp.json"), QStringLiteral("K"),
                                                 server.baseUrl(), QStringLiteral("kp.json"));
    dict.insert(QStringLiteral("DataKind"), QStringLiteral("kp"));
    RecordingDelegate delegate;
    auto node = Node::create(dict, &delegate, folder, false);
    node->beginDownloadingData();
    QVERIFY(QTest::qWaitFor([&] { return !node->isDownloading(); }, 5000));

    QVERIFY(server.lastRequest("/kp.json").contains("\r\nAccept-Encoding: gzip\r\n"));
    QVERIFY(old.open(QIODevice::ReadOnly));
    if (failure.isEmpty()) {
        QCOMPARE(delegate.failures, QStringList());
        QCOMPARE(old.readAll(), kKp);
        // Dated by its newest sample.
        QCOMPARE(QFileInfo(old).lastModified(), QDateTime(QDate(2026, 5, 1), QTime(3, 0), Qt::UTC));
    } else {
        QCOMPARE(delegate.failures, QStringList{"Download of \"K\" Failed: " + failure});
        QCOMPARE(old.readAll(), QByteArray("last good"));
    }
}

void TestNowData::shippedDefinitions()
{
    FlatGroup group;
    QVERIFY(group.loadDictionaryData(QStringLiteral("DataNow.plist"),
                                     TestEnvironment::makeFolder(QStringLiteral("data"))));
    QStringList kinds;
    for (const Node *node : group.nodes()) {
        kinds << node->dataKind();
        QVERIFY2(NowFormat::isKnownKind(node->dataKind()), qPrintable(node->itemName()));
        // Every item downloads at start-up and keeps itself up to date within the hour.
        QVERIFY(node->downloadsAtStartup() && node->autoUpdates());
        QVERIFY(node->nextUpdateInMinutes() <= 60);
    }
    kinds.sort();
    QStringList all = NowFormat::kinds();
    all.sort();
    QCOMPARE(kinds, all);
}

VANTOREL_TEST_CORE_MAIN(TestNowData)
#include "test_now_data.moc"
