#include "ui/now/NowLineSet.h"

#include <QChart>
#include <QLineSeries>

#include <algorithm>
#include <cmath>
#include <limits>

NowLineSet::NowLineSet(QChart *chart, QAbstractAxis *timeAxis, QAbstractAxis *valueAxis,
                       const QString &name, const QPen &pen)
    : _chart(chart), _timeAxis(timeAxis), _valueAxis(valueAxis), _name(name), _pen(pen)
{
    series(0);
}

QLineSeries *NowLineSet::series(int index)
{
    while (_series.size() <= index) {
        auto *line = new QLineSeries;
        line->setName(_name);
        line->setPen(_pen);
        _chart->addSeries(line);
        line->attachAxis(_timeAxis);
        line->attachAxis(_valueAxis);
        _series.append(line);
    }
    return _series.at(index);
}

void NowLineSet::clear()
{
    for (QLineSeries *line : std::as_const(_series)) {
        if (line->count() > 0)
            line->clear();
    }
}

void NowLineSet::setSegments(const NowSeriesReducer::Segments &segments,
                             const std::function<double(double)> &shown)
{
    _points.clear();
    for (int i = 0; i < std::max<int>(int(segments.size()), int(_series.size())); ++i) {
        if (i >= segments.size()) {
            if (_series.at(i)->count() > 0)
                _series.at(i)->clear();
            continue;
        }
        _points.append(segments.at(i));
        if (!shown) {
            series(i)->replace(segments.at(i));
            continue;
        }
        QList<QPointF> drawn = segments.at(i);
        for (QPointF &point : drawn)
            point.setY(shown(point.y()));
        series(i)->replace(drawn);
    }
}

double NowLineSet::valueAt(double time, double within) const
{
    const qsizetype after = std::lower_bound(_points.cbegin(), _points.cend(), time,
                                             [](const QPointF &p, double t) { return p.x() < t; }) -
                            _points.cbegin();
    double best = std::numeric_limits<double>::quiet_NaN();
    double distance = within;
    for (const qsizetype i : {after - 1, after}) {
        if (i < 0 || i >= _points.size())
            continue;
        if (const double d = std::abs(_points.at(i).x() - time); d <= distance) {
            distance = d;
            best = _points.at(i).y();
        }
    }
    return best;
}

std::pair<double, double> NowLineSet::range(const NowSeriesReducer::Segments &segments)
{
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const NowSeriesReducer::Segment &segment : segments) {
        for (const QPointF &point : segment) {
            low = std::min(low, point.y());
            high = std::max(high, point.y());
        }
    }
    if (low > high)
        return {std::nan(""), std::nan("")};
    return {low, high};
}
