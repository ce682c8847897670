#include "ui/sources/ScaledImage.h"

#include "core/util/ImageScaling.h"

#include <QImage>
#include <QImageReader>

QPixmap ScaledImage::fromFile(const QString &path, qreal devicePixelRatio)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    // Ask the decoder for the size first, so that the decoding itself can happen at the size
    // shown. Some formats (GIF) only know it after reading; they are small.
    QSize pixels = reader.size();
    if (reader.transformation().testFlag(QImageIOHandler::TransformationRotate90))
        pixels.transpose();
    if (pixels.isValid()) {
        const QSize points = ImageScaling::scaledSize(pixels);
        const qreal ratio = std::max<qreal>(1.0, devicePixelRatio);
        QSize decoded = (QSizeF(points) * ratio).toSize().boundedTo(pixels);
        if (decoded != pixels) {
            if (reader.transformation().testFlag(QImageIOHandler::TransformationRotate90))
                decoded.transpose();
            reader.setScaledSize(decoded);
        }
        QImage image = reader.read();
        if (image.isNull())
            return QPixmap();
        QPixmap pixmap = QPixmap::fromImage(std::move(image));
        pixmap.setDevicePixelRatio(qreal(pixmap.width()) / qreal(std::max(1, points.width())));
        return pixmap;
    }

    QImage image = reader.read();
    if (image.isNull())
        return QPixmap();
    const QSize points = ImageScaling::scaledSize(image.size());
    if (points != image.size())
        image = image.scaled(points, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return QPixmap::fromImage(std::move(image));
}
