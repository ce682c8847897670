#include "ui/now/NowXrayChart.h"

#include "core/now/NowChartQuery.h"
#include "core/now/NowSummary.h"
#include "ui/now/NowLineSet.h"

#include <QCategoryAxis>
#include <QDateTime>
#include <QLogValueAxis>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kLowest = 1e-9;
constexpr double kHighest = 1e-3;

} // namespace

NowXrayChart::NowXrayChart(QWidget *parent)
    : NowChartView(tr("X-ray flux (W/m²)"), parent), _fluxAxis(new QLogValueAxis),
      _classAxis(new QCategoryAxis)
{
    QChart *c = chart();
    _fluxAxis->setBase(10);
    _fluxAxis->setRange(kLowest, kHighest);
    _fluxAxis->setLabelFormat(QStringLiteral("%.0e"));
    _fluxAxis->setGridLineVisible(false);
    c->addAxis(_fluxAxis, Qt::AlignLeft);
    // The classes by their letters, each a band of a factor of ten: a linear axis over the
    // decades' exponents lines up with the logarithmic one.
    _classAxis->setRange(std::log10(kLowest), std::log10(kHighest));
    _classAxis->setStartValue(std::log10(kLowest));
    _classAxis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionCenter);
    _classAxis->append(QStringLiteral(" "), -8);
    _classAxis->append(QStringLiteral("A"), -7);
    _classAxis->append(QStringLiteral("B"), -6);
    _classAxis->append(QStringLiteral("C"), -5);
    _classAxis->append(QStringLiteral("M"), -4);
    _classAxis->append(QStringLiteral("X"), -3);
    _classAxis->setShadesVisible(true);
    c->addAxis(_classAxis, Qt::AlignRight);

    const QColor longBand(0xe8, 0x71, 0x0a);
    const QColor shortBand(0x3d, 0x8f, 0xd8);
    _long =
        std::make_unique<NowLineSet>(c, timeAxis(), _fluxAxis, tr("0.1–0.8 nm"), QPen(longBand, 1));
    _short = std::make_unique<NowLineSet>(c, timeAxis(), _fluxAxis, tr("0.05–0.4 nm"),
                                          QPen(shortBand, 1));
    setKey({{tr("0.1–0.8 nm"), longBand}, {tr("0.05–0.4 nm"), shortBand}});
    finishSetUp();
}

NowXrayChart::~NowXrayChart() = default;

void NowXrayChart::setData(const NowChartData &data)
{
    _long->clear();
    _short->clear();
    setSpan(data.from, data.to);
    // Nothing below the axis: a quiet Sun's short band reads zero at times.
    const auto shown = [](double flux) { return std::clamp(flux, kLowest, kHighest); };
    _long->setSegments(data.lines.value(NowChartQuery::key("xray", "0.1-0.8nm")), shown);
    _short->setSegments(data.lines.value(NowChartQuery::key("xray", "0.05-0.4nm")), shown);
    _within = std::max(double(NowChartQuery::kMinuteGap),
                       double(data.to - data.from) / std::max(1, plotColumns()) * 2) *
              1000.0;
}

QString NowXrayChart::readoutAt(double time) const
{
    QString text = QDateTime::fromMSecsSinceEpoch(qint64(time), Qt::UTC)
                       .toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'"));
    const double flux = _long->valueAt(time, _within);
    if (!std::isnan(flux))
        text += tr("\n%1 (%2 W/m², 0.1–0.8 nm)")
                    .arg(NowSummary::xrayClass(flux), QString::number(flux, 'e', 2));
    const double shortFlux = _short->valueAt(time, _within);
    if (!std::isnan(shortFlux))
        text += tr("\n%1 W/m², 0.05–0.4 nm").arg(QString::number(shortFlux, 'e', 2));
    return text;
}

void NowXrayChart::applyPalette()
{
    NowChartView::applyPalette();
    QColor shade = palette().color(QPalette::WindowText);
    shade.setAlphaF(0.05);
    _classAxis->setShadesBrush(shade);
    _classAxis->setShadesPen(Qt::NoPen);
}
