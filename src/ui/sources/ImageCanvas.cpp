#include "ui/sources/ImageCanvas.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

ImageCanvas::ImageCanvas(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
}

void ImageCanvas::setPixmap(const QPixmap &pixmap)
{
    _pixmap = pixmap;
    update();
}

QRect ImageCanvas::imageRect() const
{
    if (_pixmap.isNull())
        return QRect();
    const QSize natural = _pixmap.deviceIndependentSize().toSize();
    const QSize fitted = natural.scaled(size(), Qt::KeepAspectRatio);
    return QRect(QPoint((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted);
}

void ImageCanvas::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (_pixmap.isNull())
        return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(imageRect(), _pixmap);
}

void ImageCanvas::mousePressEvent(QMouseEvent *event)
{
    // The whole picture is a handle: dragging it moves the window, as its title bar would.
    if (event->button() == Qt::LeftButton) {
        if (QWindow *handle = window()->windowHandle()) {
            if (handle->startSystemMove()) {
                event->accept();
                return;
            }
        }
    }
    QWidget::mousePressEvent(event);
}
