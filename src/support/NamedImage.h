#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

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

private:
    static QString path(const QString &name);
    static QPixmap render(const QString &name, qreal devicePixelRatio);
};
