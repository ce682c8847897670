#pragma once

#include "core/now/NowChartData.h"
#include "ui/now/NowChartView.h"

#include <QList>

#include <memory>
#include <vector>

class NowLineSet;
class QLineSeries;
class QValueAxis;

// Two one-minute quantities over time: the solar wind's speed (left axis) and density (right
// axis), or the field's Bt and Bz on one axis with its zero marked, where a southward Bz shows
// below the line.
class NowLineChart : public NowChartView {
    Q_OBJECT

public:
    struct Line {
        QString kind;
        QString series;
        QString name;
        QString unit;
        QColor colour;
    };

    // With `sharedAxis`, both lines use the left axis, and its zero is drawn.
    NowLineChart(const QString &title, const Line &first, const Line &second, bool sharedAxis,
                 QWidget *parent = nullptr);
    ~NowLineChart() override;

    void setData(const NowChartData &data);

protected:
    QString readoutAt(double time) const override;
    void applyPalette() override;

private:
    NowSeriesReducer::Segments segments(const NowChartData &data, qsizetype line) const;
    // Sets the value axes for the data, before the lines are drawn (see NowLineSet::clear()).
    void scale(const NowChartData &data);

    QList<Line> _lines;
    QList<QValueAxis *> _axes;
    std::vector<std::unique_ptr<NowLineSet>> _sets;
    QLineSeries *_zero = nullptr;
    double _within = 0;
};
