#include "ui/common/ClickableText.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTimer>

#include <algorithm>

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
    // The field's own palette holds whatever colour it was last given (the highlight, after a
    // hover), so the window's colours are read from where the field would take them from: its
    // parent, or the application.
    const QPalette window =
        parentWidget() ? parentWidget()->palette() : QApplication::palette(this);
    return window.color(QPalette::Window).lightness() < 128 ? window.color(QPalette::WindowText)
                                                            : QColor(Qt::black);
}

QColor ClickableText::highlightColour() const
{
    const QPalette window =
        parentWidget() ? parentWidget()->palette() : QApplication::palette(this);
    if (window.color(QPalette::Window).lightness() >= 128)
        return _highlight;
    QColor light = _highlight;
    light.setHsl(light.hslHue(), light.hslSaturation(), std::max(light.lightness(), 175));
    return light;
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

bool ClickableText::event(QEvent *event)
{
    const bool handled = QLabel::event(event);
    // Put in a window, or the window's colours changed (a dark theme chosen): rest in the new
    // colours. Not while pointed at or pressed, which show the highlight. New colours may reach
    // this field before its window, so a change is looked at once every widget has had it (a
    // colour that stays the same changes nothing, so this ends).
    const auto rest = [this] {
        if (!underMouse() && !_beingClicked && textColour() != restingColour())
            setTextColour(restingColour());
    };
    if (event->type() == QEvent::ParentChange)
        rest();
    else if (event->type() == QEvent::PaletteChange ||
             event->type() == QEvent::ApplicationPaletteChange)
        QTimer::singleShot(0, this, rest);
    return handled;
}

void ClickableText::enterEvent(QEnterEvent *event)
{
    setCursor(Qt::PointingHandCursor);
    setTextColour(highlightColour());
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
    setTextColour(highlightColour());
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
