#pragma once

#include "core/now/NowSeriesReducer.h"

#include <QHash>
#include <QList>
#include <QString>

// One bar of the K index chart: a period from `time` (seconds since 1970, UTC) lasting
// `duration` seconds (three hours, or a few times that at long ranges), its value (the highest
// of the period), and whether that was measured, is an estimate of the period under way, or a
// forecast.
struct NowKpBar {
    enum Status { Observed, Estimated, Predicted };
    qint64 time = 0;
    qint64 duration = 3 * 3600;
    double value = 0;
    Status status = Observed;
};

// What the Now view's charts show, read from the history and thinned to the charts' width (see
// NowChartQuery). Times are seconds since 1970 in UTC.
struct NowChartData {
    // The request this answers (NowRecorder::requestChartData).
    int request = 0;
    // The span of the time charts; `to` is the moment the data was read.
    qint64 from = 0;
    qint64 to = 0;
    // The K index chart reaches past `to` into the forecast.
    qint64 kpTo = 0;
    QList<NowKpBar> kp;
    // The lines by NowChartQuery::key(kind, series).
    QHash<QString, NowSeriesReducer::Segments> lines;
};
