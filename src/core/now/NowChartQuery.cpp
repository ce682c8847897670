#include "core/now/NowChartQuery.h"

#include "core/now/NowHistory.h"

#include <QMap>

#include <algorithm>

const QList<qint64> &NowChartQuery::ranges()
{
    static const QList<qint64> spans{6 * kHour, kDay, 3 * kDay, 7 * kDay, 27 * kDay, 90 * kDay};
    return spans;
}

const QList<std::pair<QString, QString>> &NowChartQuery::lineSeries()
{
    static const QList<std::pair<QString, QString>> series{
        {QStringLiteral("xray"), QStringLiteral("0.05-0.4nm")},
        {QStringLiteral("xray"), QStringLiteral("0.1-0.8nm")},
        {QStringLiteral("solar-wind"), QStringLiteral("speed")},
        {QStringLiteral("solar-wind"), QStringLiteral("density")},
        {QStringLiteral("imf"), QStringLiteral("bt")},
        {QStringLiteral("imf"), QStringLiteral("bz")},
    };
    return series;
}

QString NowChartQuery::key(const QString &kind, const QString &series)
{
    return kind + QLatin1Char('/') + series;
}

NowChartData NowChartQuery::run(NowHistory &history, qint64 now, qint64 span, int columns)
{
    NowChartData data;
    data.from = now - span;
    data.to = now;
    data.kpTo = now + kForecastSpan;

    // Per three-hour period the surest word wins: a measurement over an estimate over a
    // forecast. The history keeps forecasts for periods long past when the application was not
    // running to hear how they turned out; the K index file tells that.
    QMap<qint64, NowKpBar> bars;
    const auto take = [&](const NowSample &sample, NowKpBar::Status status) {
        const auto it = bars.constFind(sample.time);
        if (sample.hasValue() && (it == bars.constEnd() || status <= it->status))
            bars.insert(sample.time, {sample.time, kKpPeriod, sample.value, status});
    };
    const qint64 kpFrom = data.from - kKpPeriod + 1;
    const QString kp = QStringLiteral("kp");
    for (const NowSample &sample : history.samples(kp, kp, kpFrom, data.kpTo))
        take(sample, NowKpBar::Observed);
    for (const NowSample &sample :
         history.samples(QStringLiteral("kp-forecast"), kp, kpFrom, data.kpTo)) {
        if (sample.text == QLatin1String("observed"))
            take(sample, NowKpBar::Observed);
        else if (sample.text == QLatin1String("estimated"))
            take(sample, NowKpBar::Estimated);
        else if (sample.text == QLatin1String("predicted"))
            take(sample, NowKpBar::Predicted);
    }
    // The K index chart is about as wide as the others and reaches three days further.
    qint64 period = kKpPeriod;
    while (period < kDay && columns * period < kMinBarPixels * (data.kpTo - data.from))
        period *= 2;
    QMap<qint64, NowKpBar> gathered;
    for (const NowKpBar &bar : std::as_const(bars)) {
        const qint64 start = bar.time - ((bar.time % period) + period) % period;
        const auto it = gathered.constFind(start);
        if (it == gathered.constEnd() || bar.value > it->value ||
            (bar.value == it->value && bar.status < it->status))
            gathered.insert(start, {start, period, bar.value, bar.status});
    }
    data.kp = gathered.values();

    const qint64 maxGap = std::max(kMinuteGap, columns > 0 ? 3 * span / columns : span);
    for (const auto &[kind, series] : lineSeries()) {
        NowSeriesReducer reducer(data.from, data.to, columns, maxGap);
        history.scanValues(kind, series, data.from, data.to,
                           [&reducer](qint64 time, double value) { reducer.add(time, value); });
        data.lines.insert(key(kind, series), reducer.segments(kMaxSegments));
    }
    return data;
}
