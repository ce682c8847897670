#include "ui/now/NowCharts.h"

#include "core/now/NowChartQuery.h"
#include "core/settings/Settings.h"
#include "ui/now/NowKpChart.h"
#include "ui/now/NowLineChart.h"
#include "ui/now/NowXrayChart.h"

#include <QButtonGroup>
#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QSettings>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

NowCharts::NowCharts(QWidget *parent)
    : QWidget(parent), _rangeButtons(new QButtonGroup(this)), _cursorLabel(new QLabel),
      _notice(new QLabel), _kp(new NowKpChart), _xray(new NowXrayChart),
      _solarWind(new NowLineChart(tr("Solar wind"),
                                  {QStringLiteral("solar-wind"), QStringLiteral("speed"),
                                   tr("Speed"), tr("km/s"), QColor(0xe8, 0x71, 0x0a)},
                                  {QStringLiteral("solar-wind"), QStringLiteral("density"),
                                   tr("Density"), tr("p/cm³"), QColor(0x3d, 0x8f, 0xd8)},
                                  false)),
      _imf(new NowLineChart(tr("Interplanetary magnetic field"),
                            {QStringLiteral("imf"), QStringLiteral("bt"), tr("Bt"), tr("nT"),
                             QColor(0x8a, 0x8a, 0x8a)},
                            {QStringLiteral("imf"), QStringLiteral("bz"), tr("Bz"), tr("nT"),
                             QColor(0xd9, 0x30, 0x25)},
                            true)),
      _nextTimer(new QTimer(this))
{
    _nextTimer->setSingleShot(true);
    _nextTimer->setInterval(0);
    connect(_nextTimer, &QTimer::timeout, this, &NowCharts::applyNext);

    auto *controls = new QHBoxLayout;
    controls->addWidget(new QLabel(tr("Range:")));
    for (const qint64 span : NowChartQuery::ranges()) {
        auto *button = new QToolButton;
        button->setText(rangeName(span));
        button->setCheckable(true);
        button->setAutoRaise(true);
        _rangeButtons->addButton(button);
        controls->addWidget(button);
        connect(button, &QToolButton::clicked, this, [this, span] {
            if (span == _range)
                return;
            setRange(span);
            Settings::store().setValue(QLatin1String(kRangeKey), span);
            emit rangeChanged(span);
        });
    }
    controls->addStretch(1);
    controls->addWidget(_cursorLabel);
    setCursorTime(std::nullopt);

    _notice->setWordWrap(true);
    _notice->hide();

    auto *stack = new QWidget;
    auto *chartsLayout = new QVBoxLayout(stack);
    chartsLayout->setContentsMargins(0, 0, 0, 0);
    chartsLayout->setSpacing(2);
    for (NowChartView *chart : charts()) {
        chartsLayout->addWidget(chart, 1);
        connect(chart, &NowChartView::cursorMoved, this,
                [this](double time) { setCursorTime(time); });
        connect(chart, &NowChartView::cursorLeft, this, [this] { setCursorTime(std::nullopt); });
    }
    auto *scroll = new QScrollArea;
    scroll->setWidget(stack);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(controls);
    layout->addWidget(_notice);
    layout->addWidget(scroll, 1);

    // A stored span that is no longer offered gives the default.
    const qint64 stored = Settings::store()
                              .value(QLatin1String(kRangeKey), NowChartQuery::kDefaultRange)
                              .toLongLong();
    setRange(NowChartQuery::ranges().contains(stored) ? stored : NowChartQuery::kDefaultRange);
}

QString NowCharts::rangeName(qint64 seconds)
{
    const bool hours = seconds < NowChartQuery::kDay;
    const qint64 count = seconds / (hours ? NowChartQuery::kHour : NowChartQuery::kDay);
    if (hours)
        return count == 1 ? tr("1 hour") : tr("%1 hours").arg(count);
    return count == 1 ? tr("1 day") : tr("%1 days").arg(count);
}

void NowCharts::setRange(qint64 seconds)
{
    _range = seconds;
    const qsizetype index = NowChartQuery::ranges().indexOf(seconds);
    const QList<QAbstractButton *> buttons = _rangeButtons->buttons();
    for (qsizetype i = 0; i < buttons.size(); ++i)
        buttons[i]->setChecked(i == index);
}

int NowCharts::columns() const
{
    return _xray->plotColumns();
}

QList<NowChartView *> NowCharts::charts() const
{
    return {_kp, _xray, _solarWind, _imf};
}

void NowCharts::setData(const NowChartData &data)
{
    _pending = data;
    _next = 0;
    applyNext();
}

bool NowCharts::applyNext()
{
    switch (_next++) {
    case 0:
        _kp->setData(_pending);
        break;
    case 1:
        _xray->setData(_pending);
        break;
    case 2:
        _solarWind->setData(_pending);
        break;
    case 3:
        _imf->setData(_pending);
        break;
    default:
        _next = 4;
        return false;
    }
    if (_next < 4)
        _nextTimer->start();
    else
        _pending = NowChartData();
    return true;
}

void NowCharts::setNotice(const QString &notice)
{
    _notice->setText(notice);
    _notice->setVisible(!notice.isEmpty());
}

void NowCharts::setCursorTime(std::optional<double> time)
{
    for (NowChartView *chart : charts())
        chart->setCursorTime(time);
    _cursorLabel->setText(time ? QDateTime::fromMSecsSinceEpoch(qint64(*time), Qt::UTC)
                                     .toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'"))
                               : tr("Times in UTC"));
}

void NowCharts::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    emit columnsChanged();
}
