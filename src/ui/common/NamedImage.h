#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>
#include <QStringList>

// The application's named pictures (placeholders, toolbar images, the application icon), drawn as
// vector artwork and rendered at whatever size and pixel density they are shown.
class NamedImage {
public:
    // True when artwork of that name is among the application's resources.
    static bool exists(const QString &name);
    static QIcon icon(const QString &name);
    // The picture at its own size (in points), for the given device pixel ratio; a null pixmap
    // when there is no artwork of that name. Rendered once, then served from memory.
    static QPixmap pixmap(const QString &name, qreal devicePixelRatio = 1.0);
    // Renders the pictures ahead of need, one per turn of the event loop from the given delay
    // on, so that showing one later costs nothing and nothing waits behind more than one.
    static void renderInIdleTime(const QStringList &names, qreal devicePixelRatio, int delayMs);

private:
    static QString path(const QString &name);
    static QPixmap render(const QString &name, qreal devicePixelRatio);
};
