#include "ClickableText.h"

#include <QMouseEvent>

ClickableText::ClickableText(const QColor &highlight, bool ignoresEmptyPress, QWidget *parent)
    : QLabel(parent), _highlight(highlight), _ignoresEmptyPress(ignoresEmptyPress)
{
    finishInitialization();
}

void ClickableText::finishInitialization()
{
    setFrameShape(QFrame::NoFrame);
    setAutoFillBackground(false);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setTextFormat(Qt::PlainText);
    setEnabled(true);
    setTextColour(restingColour());
}

QColor ClickableText::restingColour() const
{
    return palette().color(QPalette::Window).lightness() < 128
               ? palette().color(QPalette::WindowText)
               : QColor(Qt::black);
}

QColor ClickableText::textColour() const
{
    return palette().color(QPalette::WindowText);
}

void ClickableText::setTextColour(const QColor &colour)
{
    QPalette p = palette();
    p.setColor(QPalette::WindowText, colour);
    setPalette(p);
}

void ClickableText::enterEvent(QEnterEvent *event)
{
    setCursor(Qt::PointingHandCursor);
    setTextColour(_highlight);
    QLabel::enterEvent(event);
}

void ClickableText::leaveEvent(QEvent *event)
{
    setCursor(Qt::ArrowCursor);
    setTextColour(restingColour());
    QLabel::leaveEvent(event);
}

void ClickableText::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QLabel::mousePressEvent(event);
        return;
    }
    if (_ignoresEmptyPress && text().isEmpty())
        return;
    _beingClicked = true;
    _inside = true;
    setTextColour(_highlight);
    event->accept();
}

void ClickableText::mouseMoveEvent(QMouseEvent *event)
{
    if (!_beingClicked) {
        QLabel::mouseMoveEvent(event);
        return;
    }
    _inside = rect().contains(event->position().toPoint());
    setTextColour(restingColour());
}

void ClickableText::mouseReleaseEvent(QMouseEvent *event)
{
    if (!_beingClicked || event->button() != Qt::LeftButton) {
        QLabel::mouseReleaseEvent(event);
        return;
    }
    _inside = rect().contains(event->position().toPoint());
    _beingClicked = false;
    setTextColour(restingColour());
    if (_inside) {
        _beenClicked = true;
        emit clicked();
    }
}
