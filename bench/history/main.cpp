// The providers' JSON data, measured without a display: what a download costs the main thread
// (unpacking and checking the shape of a one-day, one-minute solar-wind file, then handing it to
// the history) and what the history's thread spends reading that file and merging it into a
// history of 90 days.
//
//   vantorel-bench-history FOLDER ROUNDS
//
// Prints one line of JSON with every round's time in milliseconds.

#include "core/net/AtomicFile.h"
#include "core/now/NowDownload.h"
#include "core/now/NowFormat.h"
#include "core/now/NowHistory.h"
#include "core/now/NowRecorder.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

constexpr qint64 kDay = 86400;

// One day of the one-minute solar-wind file as the provider writes it: newest row first, one row
// per spacecraft and minute (one active), every field the real rows carry.
QByteArray solarWindDay(qint64 end)
{
    QByteArray json = "[";
    const char *sources[] = {"SOLAR1", "ACE", "IMAP"};
    for (int minute = 0; minute < 1440; ++minute) {
        const QString time = QDateTime::fromSecsSinceEpoch(end - minute * 60, Qt::UTC)
                                 .toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
        for (int s = 0; s < 3; ++s) {
            if (json.size() > 1)
                json += ',';
            json += QStringLiteral(
                        "{\"time_tag\":\"%1\",\"active\":%2,\"source\":\"%3\","
                        "\"proton_speed\":%4,\"proton_density\":%5,\"proton_temperature\":%6,"
                        "\"proton_bulk_speed\":%4,\"proton_vx_gse\":-%4,\"proton_vy_gse\":12.3,"
                        "\"proton_vz_gse\":-4.5,\"proton_vx_gsm\":-%4,\"proton_vy_gsm\":11.2,"
                        "\"proton_vz_gsm\":-5.6,\"proton_quality\":0,\"alpha_speed\":-9999,"
                        "\"alpha_density\":-9999,\"alpha_temperature\":-9999,"
                        "\"alpha_quality\":-9999,\"overall_quality\":0,\"max_data_flag\":-9999,"
                        "\"min_data_flag\":-9999,\"range_data_flag\":-9999,\"sc_id\":%7,"
                        "\"reserved1\":null,\"reserved2\":null,\"reserved3\":null,"
                        "\"reserved4\":null}")
                        .arg(time, s == 0 ? QStringLiteral("true") : QStringLiteral("false"),
                             QLatin1String(sources[s]))
                        .arg(380.0 + minute % 97 * 0.7, 0, 'f', 1)
                        .arg(4.0 + minute % 13 * 0.25, 0, 'f', 2)
                        .arg(80000 + minute * 37)
                        .arg(s)
                        .toLatin1();
        }
    }
    return json + ']';
}

QByteArray gzip(const QByteArray &plain)
{
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    QByteArray out(qsizetype(deflateBound(&stream, uLong(plain.size()))), Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(plain.data()));
    stream.avail_in = uInt(plain.size());
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return out;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

QJsonArray toArray(const std::vector<double> &values)
{
    QJsonArray array;
    for (double v : values)
        array.append(v);
    return array;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: vantorel-bench-history FOLDER ROUNDS\n");
        return 2;
    }
    const QString folder = arguments.at(1);
    const int rounds = std::max(1, arguments.at(2).toInt());
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);

    const qint64 now = QDateTime::currentSecsSinceEpoch() / 60 * 60;
    const QByteArray plain = solarWindDay(now);
    const QByteArray packed = gzip(plain);

    // The main thread's share of a download: unpack, check the shape, write the unpacked bytes.
    std::vector<double> checkMs;
    for (int round = 0; round < rounds * 3; ++round) {
        AtomicFile file(QDir(folder).filePath(QStringLiteral("wind.json")));
        file.append(packed);
        QElapsedTimer timer;
        timer.start();
        const QString problem =
            NowDownload::check(QStringLiteral("solar-wind"), QByteArrayLiteral("gzip"), file);
        checkMs.push_back(double(timer.nsecsElapsed()) / 1e6);
        if (!problem.isEmpty() || !file.commit()) {
            std::fprintf(stderr, "the check failed: %s\n", qPrintable(problem));
            return 1;
        }
    }

    // The history's thread: read the file...
    std::vector<double> parseMs;
    NowSamples day;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        day = *NowFormat::parse(QStringLiteral("solar-wind"), plain);
        parseMs.push_back(double(timer.nsecsElapsed()) / 1e6);
    }

    // ... and merge it into a history that already holds 90 days of the same series.
    auto history = std::make_unique<NowHistory>(NowHistory::pathInFolder(folder));
    QElapsedTimer filling;
    filling.start();
    for (int back = 90; back >= 1; --back) {
        NowSamples earlier = day;
        for (NowSample &sample : earlier)
            sample.time -= back * kDay;
        if (history->merge(QStringLiteral("solar-wind"), earlier, now, 400) < 0) {
            std::fprintf(stderr, "the history failed: %s\n", qPrintable(history->lastError()));
            return 1;
        }
    }
    const double fillMs = double(filling.nsecsElapsed()) / 1e6;
    // Each round is the next download five minutes on: the same day again, all but five
    // minutes of it already kept.
    std::vector<double> mergeMs;
    for (int round = 0; round < rounds; ++round) {
        NowSamples next = day;
        for (NowSample &sample : next)
            sample.time += (round + 1) * 300;
        QElapsedTimer timer;
        timer.start();
        const int written = history->merge(QStringLiteral("solar-wind"), next, now, 400);
        mergeMs.push_back(double(timer.nsecsElapsed()) / 1e6);
        if (written != next.size())
            return 1;
    }
    history.reset();

    // What the main thread spends when a download is handed to the history, and how long the
    // history's thread then takes to read and merge it.
    const QString file = QDir(folder).filePath(QStringLiteral("wind.json"));
    std::vector<double> handOverMs;
    std::vector<double> recordedMs;
    {
        NowRecorder recorder(NowHistory::pathInFolder(folder));
        QEventLoop loop;
        QObject::connect(&recorder, &NowRecorder::recorded, &loop, &QEventLoop::quit);
        for (int round = 0; round < rounds; ++round) {
            QElapsedTimer timer;
            timer.start();
            recorder.record(QStringLiteral("solar-wind"), file);
            handOverMs.push_back(double(timer.nsecsElapsed()) / 1e6);
            loop.exec();
            recordedMs.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
    }

    const QJsonObject result{
        {QStringLiteral("plain_bytes"), plain.size()},
        {QStringLiteral("gzip_bytes"), packed.size()},
        {QStringLiteral("samples_per_day"), day.size()},
        {QStringLiteral("history_rows"), day.size() * 91},
        {QStringLiteral("history_bytes"),
         QFileInfo(NowHistory::pathInFolder(folder)).size() +
             QFileInfo(NowHistory::pathInFolder(folder) + QStringLiteral("-wal")).size()},
        {QStringLiteral("fill_90_days_ms"), fillMs},
        {QStringLiteral("check_ms"), toArray(checkMs)},
        {QStringLiteral("check_median_ms"), median(checkMs)},
        {QStringLiteral("parse_ms"), toArray(parseMs)},
        {QStringLiteral("parse_median_ms"), median(parseMs)},
        {QStringLiteral("merge_ms"), toArray(mergeMs)},
        {QStringLiteral("merge_median_ms"), median(mergeMs)},
        {QStringLiteral("hand_over_ms"), toArray(handOverMs)},
        {QStringLiteral("hand_over_median_ms"), median(handOverMs)},
        {QStringLiteral("recorded_ms"), toArray(recordedMs)},
        {QStringLiteral("recorded_median_ms"), median(recordedMs)},
    };
    std::printf("%s\n", QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    return 0;
}
