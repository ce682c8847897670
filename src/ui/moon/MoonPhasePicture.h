#pragma once

#include <QImage>
#include <QRectF>
#include <QSize>
#include <QString>

class QPainter;

// The phase pictures "MoonPhase0" to "MoonPhase7", drawn rather than shipped: a dark disc with a
// faint rim, and the lit part bounded by the limb and the terminator. Octant i shows the phase
// i/8 of the cycle as seen from the north (0 new, 2 first quarter lit on the right, 4 full, 6 last
// quarter lit on the left). Being vector drawing, they are sharp at any size and pixel density.
class MoonPhasePicture {
public:
    static constexpr int kCount = 8;

    // The octant that a picture name stands for ("MoonPhase3" gives 3), or -1 for any other
    // name.
    static int phaseForName(const QString &name);
    static QString nameForPhase(int octant);
    static bool exists(const QString &name) { return phaseForName(name) >= 0; }

    // Draws the octant's picture centred in the rectangle, as large as fits.
    static void paint(QPainter &painter, const QRectF &rect, int octant);
    // The picture on a transparent background, size in device-independent pixels.
    static QImage image(int octant, const QSize &size, qreal devicePixelRatio = 1.0);
};
