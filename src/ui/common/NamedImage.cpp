#include "ui/common/NamedImage.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>
#include <QTimer>

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
    // Rendering artwork costs milliseconds; each picture is rendered once per pixel density.
    static QHash<QPair<QString, qreal>, QPixmap> rendered;
    const auto key = qMakePair(name, devicePixelRatio);
    if (const auto it = rendered.constFind(key); it != rendered.cend())
        return *it;
    const QPixmap result = render(name, devicePixelRatio);
    rendered.insert(key, result);
    return result;
}

void NamedImage::renderInIdleTime(const QStringList &names, qreal devicePixelRatio, int delayMs)
{
    if (names.isEmpty() || !QCoreApplication::instance())
        return;
    QTimer::singleShot(delayMs, QCoreApplication::instance(), [names, devicePixelRatio] {
        pixmap(names.first(), devicePixelRatio);
        renderInIdleTime(names.mid(1), devicePixelRatio, 0);
    });
}

QPixmap NamedImage::render(const QString &name, qreal devicePixelRatio)
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
