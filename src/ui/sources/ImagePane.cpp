#include "ui/sources/ImagePane.h"

#include "ui/common/NamedImage.h"

#include <QEvent>
#include <QPainter>

ImagePane::ImagePane(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMinimumSize(96, 96);
}

void ImagePane::setPixmap(const QPixmap &pixmap)
{
    _placeholder.clear();
    _pixmap = pixmap;
    updateGeometry();
    update();
}

void ImagePane::setPlaceholder(const QString &name)
{
    _placeholder = name;
    _pixmap = QPixmap();
    updateGeometry();
    update();
}

const QPixmap &ImagePane::pixmap() const
{
    if (_pixmap.isNull() && !_placeholder.isEmpty())
        _pixmap = NamedImage::pixmap(_placeholder, devicePixelRatioF());
    return _pixmap;
}

QSize ImagePane::sizeHint() const
{
    // The placeholders are all drawn at this size; no need to render one to know it.
    if (_pixmap.isNull())
        return QSize(480, 360);
    return _pixmap.deviceIndependentSize().toSize();
}

QRect ImagePane::imageRect() const
{
    const QPixmap &image = pixmap();
    if (image.isNull())
        return QRect();
    QSize shown = image.deviceIndependentSize().toSize();
    if (shown.width() > width() || shown.height() > height())
        shown.scale(size(), Qt::KeepAspectRatio);
    return QRect(QPoint((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown);
}

void ImagePane::paintEvent(QPaintEvent *)
{
    const QPixmap &image = pixmap();
    if (image.isNull())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(imageRect(), image);
}

void ImagePane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // A placeholder is drawn for the palette it is shown on (NamedImage): draw it again.
    if (event->type() == QEvent::PaletteChange && !_placeholder.isEmpty()) {
        _pixmap = QPixmap();
        update();
    }
}
