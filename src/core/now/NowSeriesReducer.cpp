#include "core/now/NowSeriesReducer.h"

#include <algorithm>
#include <cmath>
#include <numeric>

NowSeriesReducer::NowSeriesReducer(qint64 from, qint64 to, int columns, qint64 maxGapSeconds)
    : _from(from), _to(to), _columns(columns), _maxGap(maxGapSeconds)
{
}

void NowSeriesReducer::add(qint64 time, double value)
{
    if (_columns <= 0 || _to <= _from || time < _from || time > _to || std::isnan(value))
        return;
    // The last column takes the end of the span too: `to` is "now", and the newest sample
    // belongs on the chart.
    const int column =
        int(std::min<qint64>(_columns - 1, (time - _from) * _columns / (_to - _from)));
    if (_any && time - _lastTime > _maxGap) {
        flush();
        _gaps.append(time - _lastTime);
        _segments.append(Segment());
    } else if (_open && column != _column) {
        flush();
    }
    if (!_any)
        _segments.append(Segment());
    if (!_open) {
        _column = column;
        _low = _high = {time, value};
        _open = true;
    } else if (value < _low.value) {
        _low = {time, value};
    } else if (value > _high.value) {
        _high = {time, value};
    }
    _lastTime = time;
    _any = true;
}

void NowSeriesReducer::flush()
{
    if (!_open)
        return;
    _open = false;
    const auto point = [](const Point &p) { return QPointF(double(p.time) * 1000.0, p.value); };
    Segment &segment = _segments.last();
    if (_low.time == _high.time) {
        segment.append(point(_low));
    } else if (_low.time < _high.time) {
        segment.append(point(_low));
        segment.append(point(_high));
    } else {
        segment.append(point(_high));
        segment.append(point(_low));
    }
}

NowSeriesReducer::Segments NowSeriesReducer::segments(int maxSegments)
{
    flush();
    maxSegments = std::max(maxSegments, 1);
    if (_segments.size() <= maxSegments)
        return _segments;
    // Keep the widest gaps (the earlier of equal ones), bridge the others.
    QList<int> order(_gaps.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [this](int a, int b) { return _gaps[a] > _gaps[b]; });
    QList<bool> kept(_gaps.size(), false);
    for (int i = 0; i < maxSegments - 1; ++i)
        kept[order[i]] = true;
    Segments result{_segments.first()};
    for (int i = 1; i < _segments.size(); ++i) {
        if (kept[i - 1])
            result.append(_segments[i]);
        else
            result.last().append(_segments[i]);
    }
    return result;
}
