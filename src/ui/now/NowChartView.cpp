#include "ui/now/NowChartView.h"

#include <QCategoryAxis>
#include <QDateTime>
#include <QEvent>
#include <QGraphicsLineItem>
#include <QGraphicsRectItem>
#include <QGraphicsSimpleTextItem>
#include <QLegend>
#include <QMouseEvent>
#include <QSet>

#include <algorithm>

NowChartView::NowChartView(const QString &title, QWidget *parent)
    : QChartView(new QChart, parent), _title(title.toHtmlEscaped()), _timeAxis(new QCategoryAxis)
{
    QChart *c = chart();
    c->setTitle(_title);
    c->setMargins(QMargins(4, 2, 4, 2));
    c->setBackgroundRoundness(0);
    c->setAnimationOptions(QChart::NoAnimation);
    // The title names the lines (setKey): a legend of its own would take a line of the plot's
    // height.
    c->legend()->hide();
    // Times are labelled in UTC by the view itself: a date-time axis would label them in the
    // computer's own zone.
    _timeAxis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    c->addAxis(_timeAxis, Qt::AlignBottom);

    _cursorLine = new QGraphicsLineItem(c);
    _readoutBack = new QGraphicsRectItem(c);
    _readout = new QGraphicsSimpleTextItem(c);
    for (QGraphicsItem *item :
         std::initializer_list<QGraphicsItem *>{_cursorLine, _readoutBack, _readout}) {
        item->setZValue(1000);
        item->hide();
    }
    _readoutBack->setPen(Qt::NoPen);
    connect(c, &QChart::plotAreaChanged, this, [this] {
        fillTimeAxis();
        placeCursor();
    });

    setRenderHint(QPainter::Antialiasing, false);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setMinimumHeight(180);
}

void NowChartView::finishSetUp()
{
    applyPalette();
}

void NowChartView::setSpan(qint64 from, qint64 to)
{
    _from = from;
    _to = std::max(to, from + 1);
    fillTimeAxis();
    placeCursor();
}

void NowChartView::setKey(const QList<std::pair<QString, QColor>> &key)
{
    QString title = _title;
    for (const auto &[name, colour] : key)
        title += QStringLiteral("&nbsp;&nbsp; <span style=\"color:%1\">&#9632;</span> %2")
                     .arg(colour.name(), name.toHtmlEscaped());
    chart()->setTitle(title);
}

void NowChartView::fillTimeAxis()
{
    // A label every so many hours or days, as many as fit, at round times of UTC.
    constexpr qint64 hour = 3600;
    constexpr qint64 day = 24 * hour;
    static const qint64 steps[] = {hour,    2 * hour, 3 * hour, 6 * hour, 12 * hour, day,
                                   2 * day, 3 * day,  7 * day,  14 * day, 30 * day};
    const int width = std::max(200, int(chart()->plotArea().width()));
    const qint64 most = std::max(2, width / 80);
    const qint64 span = _to - _from;
    qint64 step = steps[std::size(steps) - 1];
    for (const qint64 candidate : steps) {
        if (span / candidate <= most) {
            step = candidate;
            break;
        }
    }
    const qint64 first = (_from + step - 1) / step * step;
    const qint64 last = _to / step * step;
    _timeAxis->setRange(double(_from) * 1000.0, double(_to) * 1000.0);
    _timeAxis->setStartValue(double(_from) * 1000.0);
    // Each label added lays the axis out again: a span a few minutes on keeps the labels it has.
    if (_labelled == std::tuple(first, last, step))
        return;
    _labelled = {first, last, step};
    for (const QString &label : _timeAxis->categoriesLabels())
        _timeAxis->remove(label);
    // The axis wants every label once; a zero-width space keeps a repeated "12:00" apart.
    QSet<QString> used;
    for (qint64 tick = first; tick <= last; tick += step) {
        const QDateTime time = QDateTime::fromSecsSinceEpoch(tick, Qt::UTC);
        QString label = step < day && time.time() != QTime(0, 0)
                            ? time.toString(QStringLiteral("HH:mm"))
                            : time.toString(QStringLiteral("MMM d"));
        while (used.contains(label))
            label += QChar(0x200B);
        used.insert(label);
        _timeAxis->append(label, double(tick) * 1000.0);
    }
}

void NowChartView::setCursorTime(std::optional<double> time)
{
    _cursor = time;
    placeCursor();
}

QString NowChartView::readout() const
{
    return _cursor ? readoutAt(*_cursor) : QString();
}

int NowChartView::plotColumns() const
{
    return int(chart()->plotArea().width() * devicePixelRatioF());
}

void NowChartView::placeCursor()
{
    const QRectF plot = chart()->plotArea();
    const double from = double(_from) * 1000.0;
    const double to = double(_to) * 1000.0;
    if (!_cursor || *_cursor < from || *_cursor > to || plot.width() <= 0) {
        for (QGraphicsItem *item :
             std::initializer_list<QGraphicsItem *>{_cursorLine, _readoutBack, _readout})
            item->hide();
        return;
    }
    const double x = plot.left() + (*_cursor - from) / (to - from) * plot.width();
    _cursorLine->setLine(x, plot.top(), x, plot.bottom());
    _cursorLine->show();
    const QString text = readoutAt(*_cursor);
    _readout->setText(text);
    _readout->setVisible(!text.isEmpty());
    _readoutBack->setVisible(!text.isEmpty());
    // Beside the cursor, on the side with room.
    const QRectF box = _readout->boundingRect();
    const double left = x + 8 + box.width() <= plot.right() ? x + 8 : x - 8 - box.width();
    _readout->setPos(std::max(plot.left(), left), plot.top() + 4);
    _readoutBack->setRect(_readout->mapRectToParent(box).adjusted(-3, -2, 3, 2));
}

QString NowChartView::readoutAt(double) const
{
    return QString();
}

void NowChartView::mouseMoveEvent(QMouseEvent *event)
{
    QChartView::mouseMoveEvent(event);
    const QPointF at = chart()->mapFromScene(mapToScene(event->position().toPoint()));
    const QRectF plot = chart()->plotArea();
    if (plot.width() <= 0 || at.x() < plot.left() || at.x() > plot.right()) {
        emit cursorLeft();
        return;
    }
    const double from = double(_from) * 1000.0;
    const double to = double(_to) * 1000.0;
    emit cursorMoved(from + (at.x() - plot.left()) / plot.width() * (to - from));
}

void NowChartView::leaveEvent(QEvent *event)
{
    QChartView::leaveEvent(event);
    emit cursorLeft();
}

void NowChartView::resizeEvent(QResizeEvent *event)
{
    QChartView::resizeEvent(event);
    placeCursor();
}

void NowChartView::changeEvent(QEvent *event)
{
    QChartView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        applyPalette();
}

void NowChartView::applyPalette()
{
    const QPalette &p = palette();
    const QColor text = p.color(QPalette::WindowText);
    QColor grid = text;
    grid.setAlphaF(0.15);
    QChart *c = chart();
    setBackgroundBrush(p.color(QPalette::Window));
    c->setBackgroundBrush(p.color(QPalette::Base));
    c->setBackgroundPen(QPen(p.color(QPalette::Mid)));
    c->setTitleBrush(text);
    for (QAbstractAxis *axis : c->axes()) {
        axis->setLabelsColor(text);
        axis->setTitleBrush(text);
        axis->setLinePenColor(p.color(QPalette::Mid));
        axis->setGridLineColor(grid);
        axis->setMinorGridLineColor(grid);
    }
    _cursorLine->setPen(QPen(p.color(QPalette::Highlight), 1));
    QColor back = p.color(QPalette::Base);
    back.setAlphaF(0.75);
    _readoutBack->setBrush(back);
    _readout->setBrush(text);
}
