#pragma once

#include <QPixmap>
#include <QWidget>

// Where an image view shows the selected node's picture: at its own size, or smaller with its
// proportions kept when the pane is smaller, centred, never enlarged.
class ImagePane : public QWidget {
    Q_OBJECT

public:
    explicit ImagePane(QWidget *parent = nullptr);

    void setPixmap(const QPixmap &pixmap);
    // Shows one of the application's named pictures, rendered only when it is first needed, so
    // that views nobody has looked at yet cost nothing to set up.
    void setPlaceholder(const QString &name);
    void clear() { setPixmap(QPixmap()); }
    const QPixmap &pixmap() const;
    // The rectangle the picture occupies inside the pane.
    QRect imageRect() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    mutable QPixmap _pixmap;
    QString _placeholder;
};
