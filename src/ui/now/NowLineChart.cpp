#include "ui/now/NowLineChart.h"

#include "core/now/NowChartQuery.h"
#include "ui/now/NowLineSet.h"

#include <QCategoryAxis>
#include <QDateTime>
#include <QLineSeries>
#include <QValueAxis>

#include <algorithm>
#include <cmath>

NowLineChart::NowLineChart(const QString &title, const Line &first, const Line &second,
                           bool sharedAxis, QWidget *parent)
    : NowChartView(title, parent), _lines{first, second}
{
    QChart *c = chart();
    _axes.append(new QValueAxis);
    c->addAxis(_axes.first(), Qt::AlignLeft);
    if (!sharedAxis) {
        _axes.append(new QValueAxis);
        c->addAxis(_axes.last(), Qt::AlignRight);
        _axes.last()->setGridLineVisible(false);
    }
    for (qsizetype i = 0; i < _lines.size(); ++i) {
        QValueAxis *axis = _axes.at(std::min(i, _axes.size() - 1));
        axis->setTitleText(_lines.at(i).unit);
        axis->setLabelFormat(QStringLiteral("%g"));
        _sets.push_back(std::make_unique<NowLineSet>(c, timeAxis(), axis, _lines.at(i).name,
                                                     QPen(_lines.at(i).colour, 1)));
    }
    if (sharedAxis) {
        _zero = new QLineSeries;
        c->addSeries(_zero);
        _zero->attachAxis(timeAxis());
        _zero->attachAxis(_axes.first());
    }
    QList<std::pair<QString, QColor>> key;
    for (const Line &line : std::as_const(_lines))
        key.append({line.name, line.colour});
    setKey(key);
    finishSetUp();
}

NowLineChart::~NowLineChart() = default;

void NowLineChart::setData(const NowChartData &data)
{
    for (const auto &set : _sets)
        set->clear();
    setSpan(data.from, data.to);
    scale(data);
    if (_zero)
        _zero->replace(
            {QPointF(double(data.from) * 1000.0, 0), QPointF(double(data.to) * 1000.0, 0)});
    for (qsizetype i = 0; i < _lines.size(); ++i)
        _sets[size_t(i)]->setSegments(segments(data, i));
    _within = std::max(double(NowChartQuery::kMinuteGap),
                       double(data.to - data.from) / std::max(1, plotColumns()) * 2) *
              1000.0;
}

NowSeriesReducer::Segments NowLineChart::segments(const NowChartData &data, qsizetype line) const
{
    return data.lines.value(NowChartQuery::key(_lines.at(line).kind, _lines.at(line).series));
}

void NowLineChart::scale(const NowChartData &data)
{
    // Round limits around what is shown; a shared axis is symmetric about zero, so that north
    // and south read alike.
    const auto nice = [](double value) {
        if (value <= 0)
            return 1.0;
        const double decade = std::pow(10.0, std::floor(std::log10(value)));
        for (const double step : {1.0, 2.0, 2.5, 5.0, 10.0}) {
            if (value <= step * decade)
                return step * decade;
        }
        return 10 * decade;
    };
    if (_zero) {
        double largest = 0;
        for (qsizetype i = 0; i < _lines.size(); ++i) {
            const auto [low, high] = NowLineSet::range(segments(data, i));
            if (!std::isnan(low))
                largest = std::max({largest, std::abs(low), std::abs(high)});
        }
        const double limit = nice(std::max(largest * 1.1, 5.0));
        _axes.first()->setRange(-limit, limit);
        return;
    }
    for (qsizetype i = 0; i < _lines.size(); ++i) {
        const auto [low, high] = NowLineSet::range(segments(data, i));
        const double top = nice(std::isnan(high) ? 1.0 : high * 1.1);
        _axes.at(i)->setRange(std::isnan(low) || low >= 0 ? 0.0 : -nice(-low * 1.1), top);
    }
}

QString NowLineChart::readoutAt(double time) const
{
    QString text = QDateTime::fromMSecsSinceEpoch(qint64(time), Qt::UTC)
                       .toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'"));
    for (qsizetype i = 0; i < _lines.size(); ++i) {
        const double value = _sets[size_t(i)]->valueAt(time, _within);
        if (!std::isnan(value))
            text += QStringLiteral("\n%1 %2 %3")
                        .arg(_lines.at(i).name, QString::number(value, 'f', 1), _lines.at(i).unit);
    }
    return text;
}

void NowLineChart::applyPalette()
{
    NowChartView::applyPalette();
    if (_zero)
        _zero->setPen(QPen(palette().color(QPalette::Mid), 1, Qt::DashLine));
}
