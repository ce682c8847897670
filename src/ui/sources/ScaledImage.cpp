#include "ui/sources/ScaledImage.h"

#include "core/util/ImageScaling.h"

#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QPointer>
#include <QThreadPool>

QPixmap ScaledImage::fromFile(const QString &path, qreal devicePixelRatio)
{
    return QPixmap::fromImage(imageFromFile(path, devicePixelRatio));
}

QImage ScaledImage::imageFromFile(const QString &path, qreal devicePixelRatio)
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
            return QImage();
        image.setDevicePixelRatio(qreal(image.width()) / qreal(std::max(1, points.width())));
        return image;
    }

    QImage image = reader.read();
    if (image.isNull())
        return QImage();
    const QSize points = ImageScaling::scaledSize(image.size());
    if (points != image.size())
        image = image.scaled(points, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

bool ScaledImage::isLarge(const QString &path)
{
    // Only the header is read to learn the size. A format that tells it only after decoding (GIF)
    // counts as small; such files are.
    const QSize pixels = QImageReader(path).size();
    return pixels.isValid() && qint64(pixels.width()) * pixels.height() >= kLargePixels;
}

void ScaledImage::fromFileInBackground(const QString &path, qreal devicePixelRatio,
                                       QObject *receiver, std::function<void(const QPixmap &)> done)
{
    const QPointer<QObject> target(receiver);
    QThreadPool::globalInstance()->start([path, devicePixelRatio, target, done] {
        const QImage image = imageFromFile(path, devicePixelRatio);
        QCoreApplication *application = QCoreApplication::instance();
        if (!application)
            return;
        QMetaObject::invokeMethod(
            application,
            [image, target, done] {
                if (target)
                    done(QPixmap::fromImage(image));
            },
            Qt::QueuedConnection);
    });
}
