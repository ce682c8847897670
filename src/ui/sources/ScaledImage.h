#pragma once

#include <QImage>
#include <QPixmap>
#include <QString>

#include <functional>

class QObject;

// Loads a node's image for display at the size the image views use (see ImageScaling). Large
// files are decoded straight at the size shown, so a 4096 x 4096 solar image never exists in
// memory at full size.
class ScaledImage {
public:
    // The image at its display size in points, with as many pixels as the screen can use (never
    // more than the file has). A null pixmap when the file is not a readable image.
    static QPixmap fromFile(const QString &path, qreal devicePixelRatio = 1.0);
    // The same as an image, which any thread may make.
    static QImage imageFromFile(const QString &path, qreal devicePixelRatio = 1.0);

    // Whether the file holds a picture so large (a million pixels or more) that decoding it takes
    // longer than a frame; such a picture is decoded beside the event loop.
    static bool isLarge(const QString &path);
    // Decodes the picture beside the event loop and hands it to done on the main thread (a null
    // pixmap when the file is not a readable image), unless the receiver has gone by then.
    static void fromFileInBackground(const QString &path, qreal devicePixelRatio, QObject *receiver,
                                     std::function<void(const QPixmap &)> done);

    static constexpr qint64 kLargePixels = 1000 * 1000;
};
