// The Now view's charts: what a redraw costs the main thread at every range, over a history of
// 90 days of one-minute data (both X-ray bands, the solar wind's speed and density, Bt and Bz:
// 777,600 rows) and the K index with its forecast.
//
//   vantorel-bench-harness nowcharts FOLDER ROUNDS
//
// For each range the history's thread reads and thins the series (NowChartQuery, timed here on
// its own), then the main thread hands the result to the charts, one chart per turn of the event
// loop, each painted before the next: the figure is the longest of those steps, and their sum is
// reported beside it. Moving the shared cursor across the charts (all four painted whole) is
// timed too.

#include "HarnessApp.h"

#include "core/now/NowChartQuery.h"
#include "core/now/NowHistory.h"
#include "ui/now/NowChartView.h"
#include "ui/now/NowCharts.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>

namespace {

constexpr qint64 kDay = 86400;

// The main thread's own processor time, in milliseconds: on a busy machine the wall clock also
// counts the waits for a processor.
double threadMs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

// A quiet series with storms in it: a slow swing, minute-to-minute noise and a spike now and then,
// so that every pixel column has a low and a high of its own.
double value(qint64 time, double base, double swing, quint32 &seed)
{
    seed = seed * 1664525u + 1013904223u;
    const double noise = double(seed >> 8) / double(1u << 24) - 0.5;
    const double spike = (seed >> 4) % 5000 == 0 ? 8.0 : 0.0;
    return base + swing * (std::sin(double(time) / 40000.0) + 0.3 * noise + spike);
}

bool fillHistory(NowHistory &history, qint64 now)
{
    quint32 seed = 12345;
    const struct {
        const char *kind;
        const char *series;
        double base;
        double swing;
    } lines[] = {
        {"xray", "0.1-0.8nm", 1e-6, 5e-7},
        {"xray", "0.05-0.4nm", 1e-7, 5e-8},
        {"solar-wind", "speed", 450, 80},
        {"solar-wind", "density", 6, 3},
        {"imf", "bt", 6, 2},
        {"imf", "bz", 0, 4},
    };
    for (qint64 day = 90; day >= 1; --day) {
        QHash<QString, NowSamples> byKind;
        for (const auto &line : lines) {
            NowSamples &samples = byKind[QLatin1String(line.kind)];
            for (qint64 time = now - day * kDay; time < now - (day - 1) * kDay; time += 60) {
                double v = value(time, line.base, line.swing, seed);
                if (line.base > 0) // a flux, a speed, a density: never below zero
                    v = std::max(v, line.base * 0.01);
                samples.append({QLatin1String(line.series), time, v, QStringLiteral("SOLAR1")});
            }
        }
        for (auto it = byKind.cbegin(); it != byKind.cend(); ++it) {
            if (history.merge(it.key(), it.value(), now, 400) < 0)
                return false;
        }
    }
    NowSamples kp;
    NowSamples forecast;
    for (qint64 time = now - 90 * kDay; time < now + 3 * kDay; time += 3 * 3600) {
        const double index = std::clamp(3 + 3 * std::sin(double(time) / 300000.0), 0.0, 9.0);
        if (time < now - 3 * 3600)
            kp.append({QStringLiteral("kp"), time, index, {}});
        if (time >= now - 7 * kDay)
            forecast.append({QStringLiteral("kp"), time, index,
                             time < now - 3 * 3600 ? QStringLiteral("observed")
                             : time < now          ? QStringLiteral("estimated")
                                                   : QStringLiteral("predicted")});
    }
    return history.merge(QStringLiteral("kp"), kp, now, 400) >= 0 &&
           history.merge(QStringLiteral("kp-forecast"), forecast, now, 400) >= 0;
}

// One step of a redraw as the application takes it when the history's answer arrives: the next
// chart takes its points (the first step hands the charts the whole answer), then it is painted;
// the next step waits for the next turn of the event loop. Kept out of line, so that a profiler
// can be pointed at it (valgrind --tool=callgrind --toggle-collect='*redrawStep*').
[[gnu::noinline]] bool redrawStep(NowCharts &charts, const NowChartData *data, int index)
{
    if (data)
        charts.setData(*data);
    else if (!charts.applyNext())
        return false;
    charts.charts().at(index)->viewport()->repaint();
    return true;
}

// The shared cursor moved to a time: every chart paints it.
[[gnu::noinline]] void moveCursor(NowCharts &charts, double time)
{
    charts.setCursorTime(time);
    for (NowChartView *chart : charts.charts())
        chart->viewport()->repaint();
}

} // namespace

int runNowChartsBench(const QStringList &arguments)
{
    if (arguments.size() != 2)
        return Harness::usage("nowcharts FOLDER ROUNDS");
    const QString folder = arguments.at(0);
    const int rounds = std::max(1, arguments.at(1).toInt());
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);

    const qint64 now = QDateTime::currentSecsSinceEpoch() / 60 * 60;
    NowHistory history(NowHistory::pathInFolder(folder));
    const double fillStarted = Harness::nowMs();
    if (!fillHistory(history, now)) {
        std::fprintf(stderr, "the history failed: %s\n", qPrintable(history.lastError()));
        return 1;
    }
    const double fillMs = Harness::nowMs() - fillStarted;

    // The charts as the view lays them out in a window of the default size.
    NowCharts charts;
    charts.resize(780, 760);
    charts.show();
    if (!Harness::waitUntilExposed(&charts))
        std::fprintf(stderr, "vantorel-bench-harness: the charts were never exposed\n");
    Harness::processEventsFor(200);
    const int columns = charts.columns();

    // One redraw first, not counted: the first painting of the charts loads fonts and fills
    // caches that every later one finds ready.
    {
        const NowChartData warmUp =
            NowChartQuery::run(history, now, NowChartQuery::kDefaultRange, columns);
        for (int index = 0; index < charts.charts().size(); ++index)
            redrawStep(charts, index == 0 ? &warmUp : nullptr, index);
        Harness::processEventsFor(50);
    }

    QJsonObject ranges;
    double worst = 0;
    for (const qint64 span : NowChartQuery::ranges()) {
        std::vector<double> queryMs;
        // A redraw's longest step, and all its steps together; wall clock and the main thread's
        // own processor time.
        std::vector<double> stepMs;
        std::vector<double> stepBusyMs;
        std::vector<double> redrawMs;
        std::vector<double> redrawBusyMs;
        std::vector<double> cursorMs;
        qsizetype points = 0;
        for (int round = 0; round < rounds; ++round) {
            double started = Harness::nowMs();
            const NowChartData data = NowChartQuery::run(history, now, span, columns);
            queryMs.push_back(Harness::nowMs() - started);
            points = 0;
            for (const auto &segments : data.lines) {
                for (const auto &segment : segments)
                    points += segment.size();
            }
            double longest = 0, longestBusy = 0, total = 0, totalBusy = 0;
            for (int index = 0; index < charts.charts().size(); ++index) {
                started = Harness::nowMs();
                const double busy = threadMs();
                redrawStep(charts, index == 0 ? &data : nullptr, index);
                const double took = Harness::nowMs() - started;
                const double tookBusy = threadMs() - busy;
                longest = std::max(longest, took);
                longestBusy = std::max(longestBusy, tookBusy);
                total += took;
                totalBusy += tookBusy;
            }
            stepMs.push_back(longest);
            stepBusyMs.push_back(longestBusy);
            redrawMs.push_back(total);
            redrawBusyMs.push_back(totalBusy);
            started = Harness::nowMs();
            moveCursor(charts, double(now - span / 3) * 1000.0);
            cursorMs.push_back(Harness::nowMs() - started);
            Harness::processEventsFor(20);
        }
        const double step = Harness::median(stepMs);
        worst = std::max(worst, step);
        ranges.insert(
            QString::number(span / 3600) + QStringLiteral("h"),
            QJsonObject{{QStringLiteral("query_ms"), Harness::toJsonArray(queryMs)},
                        {QStringLiteral("query_median_ms"), Harness::median(queryMs)},
                        {QStringLiteral("step_ms"), Harness::toJsonArray(stepMs)},
                        {QStringLiteral("step_median_ms"), step},
                        {QStringLiteral("step_busy_ms"), Harness::toJsonArray(stepBusyMs)},
                        {QStringLiteral("step_busy_median_ms"), Harness::median(stepBusyMs)},
                        {QStringLiteral("redraw_ms"), Harness::toJsonArray(redrawMs)},
                        {QStringLiteral("redraw_median_ms"), Harness::median(redrawMs)},
                        {QStringLiteral("redraw_busy_ms"), Harness::toJsonArray(redrawBusyMs)},
                        {QStringLiteral("redraw_busy_median_ms"), Harness::median(redrawBusyMs)},
                        {QStringLiteral("cursor_median_ms"), Harness::median(cursorMs)},
                        {QStringLiteral("points"), points}});
    }
    Harness::printJson(QJsonObject{
        {QStringLiteral("history_rows"), 6 * 90 * 1440},
        {QStringLiteral("history_bytes"),
         QFileInfo(NowHistory::pathInFolder(folder)).size() +
             QFileInfo(NowHistory::pathInFolder(folder) + QStringLiteral("-wal")).size()},
        {QStringLiteral("fill_ms"), fillMs},
        {QStringLiteral("columns"), columns},
        {QStringLiteral("ranges"), ranges},
        {QStringLiteral("worst_step_median_ms"), worst},
    });
    return 0;
}
