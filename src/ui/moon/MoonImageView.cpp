#include "ui/moon/MoonImageView.h"

#include "ui/moon/MoonPhasePicture.h"

#include <QPainter>

MoonImageView::MoonImageView(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void MoonImageView::setImageName(const QString &name)
{
    if (name == _imageName)
        return;
    _imageName = name;
    update();
}

QSize MoonImageView::sizeHint() const
{
    return QSize(260, 260);
}

QSize MoonImageView::minimumSizeHint() const
{
    return QSize(96, 96);
}

int MoonImageView::heightForWidth(int width) const
{
    return width;
}

void MoonImageView::paintEvent(QPaintEvent *)
{
    const int octant = MoonPhasePicture::phaseForName(_imageName);
    if (octant < 0)
        return;
    // Drawn at the screen's own density, so that it stays crisp on high-density screens.
    const qreal dpr = devicePixelRatioF();
    if (octant != _drawnOctant || _drawn.deviceIndependentSize() != QSizeF(size()) ||
        _drawn.devicePixelRatio() != dpr) {
        _drawn = QPixmap(size() * dpr);
        _drawn.setDevicePixelRatio(dpr);
        _drawn.fill(Qt::transparent);
        QPainter painter(&_drawn);
        MoonPhasePicture::paint(painter, QRectF(rect()).adjusted(4, 4, -4, -4), octant);
        _drawnOctant = octant;
    }
    QPainter(this).drawPixmap(0, 0, _drawn);
}
