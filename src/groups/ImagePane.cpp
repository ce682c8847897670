#include "ImagePane.h"

#include <QPainter>

ImagePane::ImagePane(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMinimumSize(96, 96);
}

void ImagePane::setPixmap(const QPixmap &pixmap)
{
    _pixmap = pixmap;
    updateGeometry();
    update();
}

QSize ImagePane::sizeHint() const
{
    return _pixmap.isNull() ? QSize(480, 360) : _pixmap.deviceIndependentSize().toSize();
}

QRect ImagePane::imageRect() const
{
    if (_pixmap.isNull())
        return QRect();
    QSize shown = _pixmap.deviceIndependentSize().toSize();
    if (shown.width() > width() || shown.height() > height())
        shown.scale(size(), Qt::KeepAspectRatio);
    return QRect(QPoint((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown);
}

void ImagePane::paintEvent(QPaintEvent *)
{
    if (_pixmap.isNull())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(imageRect(), _pixmap);
}
