#pragma once

#include "core/now/NowSeriesReducer.h"

#include <QColor>
#include <QList>
#include <QPen>
#include <QString>

#include <functional>

class QAbstractAxis;
class QChart;
class QLineSeries;

// One charted quantity (the solar wind's speed, say) drawn as a line that breaks where the
// history has a hole: one line series per stretch between holes, kept from one redraw to the next
// so that a redraw only hands each its new points. The chart owns the series.
class NowLineSet {
public:
    NowLineSet(QChart *chart, QAbstractAxis *timeAxis, QAbstractAxis *valueAxis,
               const QString &name, const QPen &pen);

    // Takes the points away. Every change of an axis makes Qt Charts lay out each line again
    // (and trace its outline for the mouse, which costs far more than drawing it): a redraw
    // clears the lines, sets the axes, and only then gives the lines their new points.
    void clear();
    // The new points; `shown` maps a value to where it is drawn (a logarithmic axis cannot show
    // zero, for instance), if given.
    void setSegments(const NowSeriesReducer::Segments &segments,
                     const std::function<double(double)> &shown = {});
    // The value nearest to the time (milliseconds) no farther than `within`; NaN when none.
    double valueAt(double time, double within) const;
    // The lowest and highest value of the segments; NaN for both without any.
    static std::pair<double, double> range(const NowSeriesReducer::Segments &segments);

private:
    QLineSeries *series(int index);

    QChart *_chart;
    QAbstractAxis *_timeAxis;
    QAbstractAxis *_valueAxis;
    QString _name;
    QPen _pen;
    QList<QLineSeries *> _series;
    // Every point of every segment, oldest first, for the cursor's look-ups.
    QList<QPointF> _points;
};
