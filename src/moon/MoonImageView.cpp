#include "MoonImageView.h"

#include "MoonPhasePicture.h"

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
    // Drawn straight onto the widget: the painter works in device-independent pixels and the
    // paths are rasterised at the screen's own density.
    QPainter painter(this);
    const QRectF area = QRectF(rect()).adjusted(4, 4, -4, -4);
    MoonPhasePicture::paint(painter, area, octant);
}
