#pragma once

#include "core/now/NowChartData.h"

#include <QList>
#include <QString>
#include <QStringList>

class NowHistory;

// Reads what the Now view's charts show out of the history: the K index (observed, estimated and
// predicted) from the span back to three days ahead, and the one-minute series (both X-ray bands,
// the solar wind's speed and density, Bt and Bz) over the span, each thinned to the charts' width.
// Ninety days of one-minute rows take far longer to read than a frame, so this runs on the
// history's thread (NowRecorder::requestChartData), never on the main thread.
class NowChartQuery {
public:
    static constexpr qint64 kHour = 3600;
    static constexpr qint64 kDay = 86400;
    // How far the K index chart looks ahead: as far as the forecast goes.
    static constexpr qint64 kForecastSpan = 3 * kDay;
    static constexpr qint64 kKpPeriod = 3 * kHour;
    // Narrower K index bars than this many pixels are gathered into bars of 6, 12 or 24 hours,
    // each the highest of its periods: at 90 days a bar per three hours is less than a pixel wide,
    // and drawing 700 of them costs more than a frame.
    static constexpr int kMinBarPixels = 4;
    // A one-minute series without a sample for this long has a hole, not a quiet stretch: the
    // line breaks there (more at a range whose pixel columns are wider than that).
    static constexpr qint64 kMinuteGap = 15 * 60;
    // A chart draws each stretch between holes as a line of its own; more than this and the
    // narrowest holes are bridged.
    static constexpr int kMaxSegments = 48;

    // The spans the charts offer, shortest first: 6 hours, 1, 3, 7, 27 and 90 days.
    static const QList<qint64> &ranges();
    static constexpr qint64 kDefaultRange = 7 * kDay;

    // The charted lines: (kind, series) as the history keeps them.
    static const QList<std::pair<QString, QString>> &lineSeries();
    static QString key(const QString &kind, const QString &series);

    // Everything the charts show over the `span` before `now`, the lines thinned to `columns`
    // pixel columns.
    static NowChartData run(NowHistory &history, qint64 now, qint64 span, int columns);
};
