#include "ui/moon/MoonPhasePicture.h"

#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Unlit side: dark enough to read as shadow on a light window, with a rim that keeps the disc's
// outline visible on a dark one.
const QColor kShadowCentre(0x3b, 0x40, 0x48);
const QColor kShadowEdge(0x1f, 0x22, 0x27);
const QColor kRim(0xff, 0xff, 0xff, 0x50);
const QColor kLitCentre(0xfb, 0xf8, 0xef);
const QColor kLitEdge(0xd8, 0xd2, 0xc2);
const QColor kMare(0x8a, 0x86, 0x7c, 0x48);

// The larger dark plains of the near side, roughly where they lie as seen from the north, in
// units of the disc's radius from its centre (x to the right, y down). They are drawn with soft
// edges and little contrast: enough to read as the Moon's face, not enough to look like craters.
struct Mare {
    double x;
    double y;
    double rx;
    double ry;
};
constexpr Mare kMaria[] = {
    {-0.26, -0.42, 0.24, 0.19}, // Imbrium
    {0.17, -0.36, 0.15, 0.13},  // Serenitatis
    {0.33, -0.08, 0.18, 0.14},  // Tranquillitatis
    {0.63, -0.27, 0.09, 0.08},  // Crisium
    {0.52, 0.12, 0.11, 0.14},   // Fecunditatis
    {0.30, 0.24, 0.09, 0.08},   // Nectaris
    {-0.56, -0.06, 0.24, 0.34}, // Procellarum
    {-0.15, 0.38, 0.15, 0.11},  // Nubium
    {-0.43, 0.38, 0.09, 0.08},  // Humorum
    {0.01, -0.11, 0.11, 0.08},  // Vaporum
};

// The lit part of the disc for a phase fraction: bounded by the limb on the lit side and by the
// terminator, half an ellipse whose half-width is r·|cos(2πf)|. It bulges towards the lit limb
// while the Moon is a crescent and away from it while gibbous.
QPainterPath litPath(const QRectF &disc, double fraction)
{
    QPainterPath path;
    const double c = std::cos(2.0 * std::numbers::pi * fraction);
    const double r = disc.width() / 2.0;
    const QPointF centre = disc.center();
    const QRectF terminator(centre.x() - r * std::abs(c), disc.top(), 2.0 * r * std::abs(c),
                            disc.height());
    const bool waxing = fraction < 0.5;
    const bool crescent = c > 0.0;

    path.moveTo(centre.x(), disc.top());
    // The lit limb, from the top to the bottom.
    path.arcTo(disc, 90.0, waxing ? -180.0 : 180.0);
    // Back up along the terminator.
    const double sweep = (waxing == crescent) ? 180.0 : -180.0;
    path.arcTo(terminator, -90.0, sweep);
    path.closeSubpath();
    return path;
}

} // namespace

int MoonPhasePicture::phaseForName(const QString &name)
{
    static const QRegularExpression pattern(QStringLiteral("^MoonPhase([0-7])$"));
    const QRegularExpressionMatch match = pattern.match(name);
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

QString MoonPhasePicture::nameForPhase(int octant)
{
    return QStringLiteral("MoonPhase%1").arg(octant);
}

void MoonPhasePicture::paint(QPainter &painter, const QRectF &rect, int octant)
{
    if (octant < 0 || octant >= kCount || rect.isEmpty())
        return;

    const double side = std::min(rect.width(), rect.height());
    const double rimWidth = std::max(1.0, side / 140.0);
    const double radius = side / 2.0 - rimWidth;
    const QPointF centre = rect.center();
    const QRectF disc(centre.x() - radius, centre.y() - radius, 2.0 * radius, 2.0 * radius);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    QRadialGradient shadow(centre, radius, centre - QPointF(radius * 0.3, radius * 0.3));
    shadow.setColorAt(0.0, kShadowCentre);
    shadow.setColorAt(1.0, kShadowEdge);
    painter.setBrush(shadow);
    painter.drawEllipse(disc);

    const double fraction = octant / double(kCount);
    if (octant != 0) {
        const QPainterPath lit = litPath(disc, fraction);
        // Limb darkening: the centre of the face is brighter than its edge.
        QRadialGradient light(centre, radius);
        light.setColorAt(0.0, kLitCentre);
        light.setColorAt(0.75, kLitCentre.darker(104));
        light.setColorAt(1.0, kLitEdge);
        painter.setBrush(light);
        painter.drawPath(lit);

        painter.setClipPath(lit, Qt::IntersectClip);
        for (const Mare &mare : kMaria) {
            const QPointF at(centre.x() + mare.x * radius, centre.y() + mare.y * radius);
            // A circular gradient squeezed into the plain's ellipse fades evenly to its edge.
            painter.save();
            painter.translate(at);
            painter.scale(mare.rx * radius * 1.3, mare.ry * radius * 1.3);
            QRadialGradient soft(QPointF(0, 0), 1.0);
            soft.setColorAt(0.0, kMare);
            soft.setColorAt(0.45, kMare);
            soft.setColorAt(1.0, Qt::transparent);
            painter.setBrush(soft);
            painter.drawEllipse(QPointF(0, 0), 1.0, 1.0);
            painter.restore();
        }
        painter.setClipping(false);
    }

    QPen rim(kRim, rimWidth);
    painter.setPen(rim);
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(disc);
    painter.restore();
}

QImage MoonPhasePicture::image(int octant, const QSize &size, qreal devicePixelRatio)
{
    QImage result(size * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(devicePixelRatio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    paint(painter, QRectF(QPointF(0, 0), QSizeF(size)), octant);
    return result;
}
