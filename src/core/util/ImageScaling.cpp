#include "core/util/ImageScaling.h"

QSize ImageScaling::scaledSize(const QSize &pixels)
{
    int w = pixels.width();
    int h = pixels.height();
    if (w <= kMaximumSide && h <= kMaximumSide)
        return QSize(w, h);

    // The ratios are single precision on purpose: the truncated results depend on it.
    const float rw = float(w) / float(kMaximumSide);
    const float rh = float(h) / float(kMaximumSide);
    if (rw > rh) {
        w = kMaximumSide;
        h = int(float(h) / rw);
    } else {
        h = kMaximumSide;
        w = int(float(w) / rh);
    }
    return QSize(w, h);
}
