#pragma once

#include "core/now/NowChartData.h"
#include "ui/now/NowChartView.h"

#include <memory>

class NowLineSet;
class QCategoryAxis;
class QLogValueAxis;

// The X-ray flux of both bands on a logarithmic axis, with the flare classes A, B, C, M and X
// marked as bands beside it.
class NowXrayChart : public NowChartView {
    Q_OBJECT

public:
    explicit NowXrayChart(QWidget *parent = nullptr);
    ~NowXrayChart() override;

    void setData(const NowChartData &data);

protected:
    QString readoutAt(double time) const override;
    void applyPalette() override;

private:
    QLogValueAxis *_fluxAxis;
    QCategoryAxis *_classAxis;
    std::unique_ptr<NowLineSet> _long;
    std::unique_ptr<NowLineSet> _short;
    double _within = 0;
};
