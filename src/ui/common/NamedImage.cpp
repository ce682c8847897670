#include "ui/common/NamedImage.h"

#include "ui/common/ArtworkIconEngine.h"
#include "ui/common/ArtworkRecolour.h"
#include "ui/common/WindowAppearance.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>
#include <QThreadPool>
#include <QTimer>

#include <future>

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
    if (file.isEmpty())
        return QIcon();
    if (file.endsWith(QLatin1String(".svg")))
        return QIcon(new ArtworkIconEngine(file));
    return QIcon(file);
}

namespace {

// Each picture rendered once per pixel density, kept for the whole run; touched on the main
// thread only.
QHash<QPair<QString, qreal>, QPixmap> &renderedPictures()
{
    static QHash<QPair<QString, qreal>, QPixmap> rendered;
    return rendered;
}

// The pictures being rendered by prepare(), until pixmap() takes them.
QHash<QPair<QString, qreal>, std::shared_future<QImage>> &preparedPictures()
{
    static QHash<QPair<QString, qreal>, std::shared_future<QImage>> prepared;
    return prepared;
}

// A picture is drawn for a density and for the palette it is shown on (light or dark).
QPair<QString, qreal> cacheKey(const QString &name, qreal devicePixelRatio, bool dark)
{
    return qMakePair(dark ? name + QStringLiteral("/dark") : name, devicePixelRatio);
}

// Read on the main thread, where the palette lives; the renderers are handed the answer.
bool darkWindow()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) &&
           WindowAppearance::isDark();
}

} // namespace

QPixmap NamedImage::pixmap(const QString &name, qreal devicePixelRatio)
{
    // Rendering artwork costs milliseconds; each picture is rendered once per pixel density.
    auto &rendered = renderedPictures();
    const bool dark = darkWindow();
    const auto key = cacheKey(name, devicePixelRatio, dark);
    if (const auto it = rendered.constFind(key); it != rendered.cend())
        return *it;
    const std::shared_future<QImage> prepared = preparedPictures().take(key);
    const QPixmap result = QPixmap::fromImage(
        prepared.valid() ? prepared.get() : render(name, devicePixelRatio, dark));
    rendered.insert(key, result);
    return result;
}

void NamedImage::renderInBackground(const QStringList &names, qreal devicePixelRatio, int delayMs)
{
    if (names.isEmpty() || !QCoreApplication::instance())
        return;
    QTimer::singleShot(delayMs, QCoreApplication::instance(), [names, devicePixelRatio] {
        const bool dark = darkWindow();
        QThreadPool::globalInstance()->start([names, devicePixelRatio, dark] {
            for (const QString &name : names) {
                const QImage image = render(name, devicePixelRatio, dark);
                QCoreApplication *application = QCoreApplication::instance();
                if (!application)
                    return;
                QMetaObject::invokeMethod(
                    application,
                    [name, devicePixelRatio, dark, image] {
                        // A picture asked for meanwhile is there already, and stays the one
                        // shown.
                        const auto key = cacheKey(name, devicePixelRatio, dark);
                        if (!renderedPictures().contains(key))
                            renderedPictures().insert(key, QPixmap::fromImage(image));
                    },
                    Qt::QueuedConnection);
            }
        });
    });
}

void NamedImage::prepare(const QStringList &names, qreal devicePixelRatio)
{
    const bool dark = darkWindow();
    for (const QString &name : names) {
        const auto key = cacheKey(name, devicePixelRatio, dark);
        if (renderedPictures().contains(key) || preparedPictures().contains(key))
            continue;
        preparedPictures().insert(key,
                                  std::async(std::launch::async, [name, devicePixelRatio, dark] {
                                      return render(name, devicePixelRatio, dark);
                                  }).share());
    }
}

QImage NamedImage::render(const QString &name, qreal devicePixelRatio, bool dark)
{
    const QString file = path(name);
    if (file.isEmpty())
        return QImage();
    if (!file.endsWith(QLatin1String(".svg")))
        return dark ? ArtworkRecolour::forDarkBackground(QImage(file)) : QImage(file);

    QSvgRenderer renderer(file);
    if (!renderer.isValid())
        return QImage();
    const QSize size = renderer.defaultSize();
    QImage result(size * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(devicePixelRatio);
    result.fill(Qt::transparent);
    {
        QPainter painter(&result);
        renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    }
    return dark ? ArtworkRecolour::forDarkBackground(result) : result;
}
