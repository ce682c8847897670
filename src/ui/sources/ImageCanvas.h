#pragma once

#include <QPixmap>
#include <QWidget>

// Shows an image filling the widget with its proportions kept, centred, and lets the user move
// the window by dragging the picture.
class ImageCanvas : public QWidget {
    Q_OBJECT

public:
    explicit ImageCanvas(QWidget *parent = nullptr);

    void setPixmap(const QPixmap &pixmap);
    const QPixmap &pixmap() const { return _pixmap; }
    // The rectangle the image occupies inside the widget.
    QRect imageRect() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QPixmap _pixmap;
};
