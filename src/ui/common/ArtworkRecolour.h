#pragma once

#include <QImage>

// The application's artwork is drawn for light backgrounds: its shapes end in dark outlines, and
// its night skies are dark themselves, so on a dark window their edges disappear. For a dark
// window each picture gets a thin light rim around its shapes, drawn behind it, which gives every
// shape back its edge and leaves the picture itself as it was drawn.
class ArtworkRecolour {
public:
    // The picture with its rim, one point wide at the picture's pixel density.
    static QImage forDarkBackground(const QImage &artwork);
};
