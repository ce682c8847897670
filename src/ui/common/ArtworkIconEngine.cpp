#include "ui/common/ArtworkIconEngine.h"

#include "ui/common/ArtworkRecolour.h"
#include "ui/common/WindowAppearance.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QSvgRenderer>

void ArtworkIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode,
                              QIcon::State state)
{
    const qreal scale = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    painter->drawPixmap(rect, scaledPixmap(rect.size(), mode, state, scale));
}

QPixmap ArtworkIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    return scaledPixmap(size, mode, state, 1.0);
}

QPixmap ArtworkIconEngine::scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state,
                                        qreal scale)
{
    Q_UNUSED(state);
    const QSize pixels = (QSizeF(size) * scale).toSize();
    if (pixels.isEmpty())
        return QPixmap();
    // Drawn for the palette in force: a dark window has the artwork with its light rim.
    const bool dark = qApp && WindowAppearance::isDark();
    const QString key = QStringLiteral("%1x%2:%3:%4")
                            .arg(pixels.width())
                            .arg(pixels.height())
                            .arg(int(mode))
                            .arg(int(dark));
    if (const auto it = _rendered.constFind(key); it != _rendered.cend())
        return *it;

    QSvgRenderer renderer(_path);
    if (!renderer.isValid())
        return QPixmap();
    // The picture keeps its proportions, centred in the square asked for.
    QSize drawn = renderer.defaultSize();
    drawn.scale(pixels, Qt::KeepAspectRatio);
    QPixmap result(pixels);
    result.fill(Qt::transparent);
    {
        QPainter painter(&result);
        renderer.render(&painter, QRectF(QPointF((pixels.width() - drawn.width()) / 2.0,
                                                 (pixels.height() - drawn.height()) / 2.0),
                                         QSizeF(drawn)));
    }
    if (dark)
        result = QPixmap::fromImage(ArtworkRecolour::forDarkBackground(result.toImage()));
    // A disabled or selected icon looks the way the style draws any such icon.
    if (mode != QIcon::Normal && mode != QIcon::Active && qApp) {
        QStyleOption option;
        option.palette = QApplication::palette();
        result = QApplication::style()->generatedIconPixmap(mode, result, &option);
    }
    result.setDevicePixelRatio(scale);
    _rendered.insert(key, result);
    return result;
}

QIconEngine *ArtworkIconEngine::clone() const
{
    return new ArtworkIconEngine(*this);
}
