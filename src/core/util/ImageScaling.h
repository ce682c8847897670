#pragma once

#include <QSize>

// How big a node's image is shown: one image pixel per point, with the longer side cut down to
// 800 points and the other side keeping the proportion, truncated toward zero. Images are never
// enlarged.
class ImageScaling {
public:
    static constexpr int kMaximumSide = 800;

    static QSize scaledSize(const QSize &pixels);
};
