#pragma once

#include "core/now/NowChartData.h"
#include "ui/now/NowChartView.h"

#include <QList>

class QAreaSeries;
class QLineSeries;
class QValueAxis;

// The planetary K index as bars of three hours, each in the colour of its G level: solid where
// measured, pale where estimated, hatched where forecast. A dashed line marks the present.
class NowKpChart : public NowChartView {
    Q_OBJECT

public:
    explicit NowKpChart(QWidget *parent = nullptr);

    void setData(const NowChartData &data);

protected:
    QString readoutAt(double time) const override;
    void applyPalette() override;

private:
    QAreaSeries *&area(int level, NowKpBar::Status status);

    QValueAxis *_valueAxis;
    // One area per G level (0 to 5) and status.
    QList<QAreaSeries *> _areas;
    QLineSeries *_now;
    QList<NowKpBar> _bars;
};
