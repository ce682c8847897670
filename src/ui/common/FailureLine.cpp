#include "ui/common/FailureLine.h"

#include <QPainter>

FailureLine::FailureLine(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    // A red that reads on light and dark windows alike.
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, QColor(0xd0, 0x30, 0x30));
    setPalette(colours);
}

void FailureLine::setFailure(const QString &failure)
{
    QString line = failure;
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    setText(line);
    setToolTip(line);
}

void FailureLine::paintEvent(QPaintEvent *)
{
    // The beginning says what failed; it is the end that gives way.
    const QRect area = contentsRect();
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, area.width()));
}
