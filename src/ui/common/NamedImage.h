#pragma once

#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QString>
#include <QStringList>

// The application's named pictures (placeholders, toolbar images, the application icon), drawn as
// vector artwork and rendered at whatever size and pixel density they are shown, and for the
// palette they are shown on (ArtworkRecolour gives them a rim on a dark window).
class NamedImage {
public:
    // True when artwork of that name is among the application's resources.
    static bool exists(const QString &name);
    static QIcon icon(const QString &name);
    // The picture at its own size (in points), for the given device pixel ratio; a null pixmap
    // when there is no artwork of that name. Rendered once, then served from memory.
    static QPixmap pixmap(const QString &name, qreal devicePixelRatio = 1.0);
    // Renders the pictures ahead of need, from the given delay on, beside the event loop (a
    // picture with words takes longer than a frame to render, the first one most), so that
    // showing one later costs nothing.
    static void renderInBackground(const QStringList &names, qreal devicePixelRatio, int delayMs);
    // Starts rendering the pictures at once on another thread, for a window about to be drawn
    // while this thread builds it; pixmap() then waits for that rendering instead of doing it.
    static void prepare(const QStringList &names, qreal devicePixelRatio);

private:
    static QString path(const QString &name);
    // Drawn for a dark window (dark) or a light one; safe on any thread.
    static QImage render(const QString &name, qreal devicePixelRatio, bool dark);
};
