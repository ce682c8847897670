#include "ui/now/NowKpChart.h"

#include "core/now/NowChartQuery.h"
#include "core/now/NowSummary.h"
#include "ui/now/NowLevelColors.h"

#include <QAreaSeries>
#include <QCategoryAxis>
#include <QDateTime>
#include <QLegend>
#include <QLineSeries>
#include <QValueAxis>

namespace {

constexpr int kLevels = 6;
constexpr int kStatuses = 3;

QString statusText(NowKpBar::Status status)
{
    switch (status) {
    case NowKpBar::Observed:
        return NowKpChart::tr("observed");
    case NowKpBar::Estimated:
        return NowKpChart::tr("estimated");
    case NowKpBar::Predicted:
        return NowKpChart::tr("predicted");
    }
    return QString();
}

} // namespace

NowKpChart::NowKpChart(QWidget *parent)
    : NowChartView(tr("Planetary K index: solid observed, pale estimated, hatched predicted"),
                   parent),
      _valueAxis(new QValueAxis), _now(new QLineSeries)
{
    QChart *c = chart();
    _valueAxis->setRange(0, 9);
    _valueAxis->setTickCount(4);
    _valueAxis->setLabelFormat(QStringLiteral("%d"));
    c->addAxis(_valueAxis, Qt::AlignLeft);
    for (int level = 0; level < kLevels; ++level) {
        for (int status = 0; status < kStatuses; ++status) {
            auto *upper = new QLineSeries;
            auto *series = new QAreaSeries(upper);
            upper->setParent(series);
            const QColor colour = NowLevelColors::background(level);
            switch (NowKpBar::Status(status)) {
            case NowKpBar::Observed:
                series->setBrush(colour);
                series->setPen(Qt::NoPen);
                break;
            case NowKpBar::Estimated: {
                QColor pale = colour;
                pale.setAlphaF(0.45);
                series->setBrush(pale);
                series->setPen(QPen(colour, 1));
                break;
            }
            case NowKpBar::Predicted:
                series->setBrush(QBrush(colour, Qt::BDiagPattern));
                series->setPen(QPen(colour, 1));
                break;
            }
            c->addSeries(series);
            series->attachAxis(timeAxis());
            series->attachAxis(_valueAxis);
            _areas.append(series);
        }
    }
    c->addSeries(_now);
    _now->attachAxis(timeAxis());
    _now->attachAxis(_valueAxis);
    finishSetUp();
}

QAreaSeries *&NowKpChart::area(int level, NowKpBar::Status status)
{
    return _areas[std::clamp(level, 0, kLevels - 1) * kStatuses + int(status)];
}

void NowKpChart::setData(const NowChartData &data)
{
    // Emptied before the axis changes, which would lay every bar out again (as NowLineSet does).
    for (QAreaSeries *series : std::as_const(_areas)) {
        if (series->upperSeries()->count() > 0)
            series->upperSeries()->clear();
    }
    setSpan(data.from, data.kpTo);
    _bars = data.kp;
    QList<QList<QPointF>> points(_areas.size());
    for (const NowKpBar &bar : std::as_const(_bars)) {
        // A bar from the period's start to its end, a little narrower so that neighbours part.
        const double start = double(bar.time + 300) * 1000.0;
        const double end = double(bar.time + bar.duration - 300) * 1000.0;
        QList<QPointF> &shape =
            points[_areas.indexOf(area(NowSummary::gScale(bar.value), bar.status))];
        shape << QPointF(start, 0) << QPointF(start, bar.value) << QPointF(end, bar.value)
              << QPointF(end, 0);
    }
    for (qsizetype i = 0; i < _areas.size(); ++i) {
        _areas[i]->upperSeries()->replace(points[i]);
        _areas[i]->setVisible(!points[i].isEmpty());
    }
    const double now = double(data.to) * 1000.0;
    _now->replace({QPointF(now, 0), QPointF(now, 9)});
}

QString NowKpChart::readoutAt(double time) const
{
    const QString when = QDateTime::fromMSecsSinceEpoch(qint64(time), Qt::UTC)
                             .toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'"));
    for (const NowKpBar &bar : _bars) {
        if (time < double(bar.time) * 1000.0 || time >= double(bar.time + bar.duration) * 1000.0)
            continue;
        QString text = tr("%1\nKp %2, G%3, %4")
                           .arg(when, QString::number(bar.value, 'f', 2))
                           .arg(NowSummary::gScale(bar.value))
                           .arg(statusText(bar.status));
        if (bar.duration > NowChartQuery::kKpPeriod)
            text += tr(" (the highest of %1 hours)").arg(bar.duration / NowChartQuery::kHour);
        return text;
    }
    return when;
}

void NowKpChart::applyPalette()
{
    NowChartView::applyPalette();
    QPen pen(palette().color(QPalette::WindowText), 1, Qt::DashLine);
    _now->setPen(pen);
}
