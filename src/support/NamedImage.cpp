#include "NamedImage.h"

#include <QFileInfo>
#include <QPainter>
#include <QSvgRenderer>

QString NamedImage::path(const QString &name)
{
    if (name.isEmpty())
        return QString();
    for (const char *suffix : {".svg", ".png"}) {
        const QString candidate = QStringLiteral(":/images/") + name + QLatin1String(suffix);
        if (QFileInfo::exists(candidate))
            return candidate;
    }
    return QString();
}

bool NamedImage::exists(const QString &name)
{
    return !path(name).isEmpty();
}

QIcon NamedImage::icon(const QString &name)
{
    const QString file = path(name);
    return file.isEmpty() ? QIcon() : QIcon(file);
}

QPixmap NamedImage::pixmap(const QString &name, qreal devicePixelRatio)
{
    const QString file = path(name);
    if (file.isEmpty())
        return QPixmap();
    if (!file.endsWith(QLatin1String(".svg")))
        return QPixmap(file);

    QSvgRenderer renderer(file);
    if (!renderer.isValid())
        return QPixmap();
    const QSize size = renderer.defaultSize();
    QPixmap result(size * devicePixelRatio);
    result.setDevicePixelRatio(devicePixelRatio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return result;
}
