#pragma once

#include <QHash>
#include <QIconEngine>
#include <QPixmap>
#include <QString>

// An icon drawn from one of the application's vector pictures, read only when it is first drawn
// and then kept per size. Qt's own engine for such files reads each file once more when the icon
// is made, to check it, which at start-up costs every toolbar picture twice before the first frame.
class ArtworkIconEngine : public QIconEngine {
public:
    explicit ArtworkIconEngine(const QString &path) : _path(path) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override;
    QIconEngine *clone() const override;
    QString key() const override { return QStringLiteral("ArtworkIconEngine"); }
    bool isNull() override { return _path.isEmpty(); }

private:
    QString _path;
    QHash<QString, QPixmap> _rendered;
};
