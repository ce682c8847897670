#pragma once

#include <QList>
#include <QPointF>

// Thins a series to what a chart of a given width can show: ninety days of one-minute data are
// 130,000 points, a chart is perhaps a thousand pixels wide, and drawing the rest costs time
// without changing a pixel. Each pixel column keeps its lowest and its highest value, at their own
// times and in time order, so a spike of a single minute still reaches its full height at any
// range.
//
// Where two samples are farther apart than the largest gap given, the line breaks: a span the
// history has nothing for (the application was not running, the spacecraft sent nothing) must not
// be drawn as if it had been measured. The result is a list of segments, each drawn as one line.
//
// Samples are added oldest first; samples outside the span and those without a value are left
// out.
class NowSeriesReducer {
public:
    // Points are (milliseconds since 1970 in UTC, value), the unit of the charts' time axes.
    using Segment = QList<QPointF>;
    using Segments = QList<Segment>;

    // The span from `from` to `to` (seconds, both included) in `columns` equal columns.
    NowSeriesReducer(qint64 from, qint64 to, int columns, qint64 maxGapSeconds);

    void add(qint64 time, double value);

    // The reduced series. With more segments than `maxSegments`, the narrowest gaps are bridged
    // until that many are left: a chart draws each segment on its own, and a few hundred short
    // holes in a long span would cost more than they tell.
    Segments segments(int maxSegments = 1 << 30);

private:
    struct Point {
        qint64 time;
        double value;
    };
    void flush();

    qint64 _from;
    qint64 _to;
    int _columns;
    qint64 _maxGap;

    Segments _segments;
    // The width of the gap before each segment but the first.
    QList<qint64> _gaps;
    int _column = -1;
    Point _low{};
    Point _high{};
    qint64 _lastTime = 0;
    // Whether a sample was taken at all, and whether a column is being gathered.
    bool _any = false;
    bool _open = false;
};
