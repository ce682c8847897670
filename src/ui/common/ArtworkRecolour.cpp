#include "ui/common/ArtworkRecolour.h"

#include <QPainter>

namespace {

// Light enough to stand out from any dark window, soft enough not to look like a frame.
const QColor kRim(0xdc, 0xe4, 0xf0, 0xa0);

} // namespace

QImage ArtworkRecolour::forDarkBackground(const QImage &artwork)
{
    if (artwork.isNull())
        return artwork;
    // All in pixels: the density is given back at the end.
    const qreal density = artwork.devicePixelRatio();
    QImage source = artwork.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    source.setDevicePixelRatio(1.0);
    const int width = std::max(1, qRound(density));

    // The shapes, widened by the rim's width in every direction, in the rim's colour.
    QImage rim(source.size(), QImage::Format_ARGB32_Premultiplied);
    rim.fill(Qt::transparent);
    {
        QPainter painter(&rim);
        for (int dx = -width; dx <= width; dx += width) {
            for (int dy = -width; dy <= width; dy += width) {
                if (dx != 0 || dy != 0)
                    painter.drawImage(QPoint(dx, dy), source);
            }
        }
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(rim.rect(), kRim);
    }
    {
        QPainter painter(&rim);
        painter.drawImage(QPoint(0, 0), source);
    }
    rim.setDevicePixelRatio(density);
    return rim;
}
