#pragma once

#include <QPixmap>
#include <QString>

// Loads a node's image for display at the size the image views use (see ImageScaling). Large
// files are decoded straight at the size shown, so a 4096 x 4096 solar image never exists in
// memory at full size.
class ScaledImage {
public:
    // The image at its display size in points, with as many pixels as the screen can use (never
    // more than the file has). A null pixmap when the file is not a readable image.
    static QPixmap fromFile(const QString &path, qreal devicePixelRatio = 1.0);
};
