#pragma once

#include <QSize>
#include <QTimer>
#include <QWidget>

class ImageCanvas;

// The floating window of one node's image: titled, closable, minimisable and resizable, movable
// by dragging the picture. Closing it only hides it. After the user resizes it, it settles to the
// image's proportions within its size limits.
class ImageWindow : public QWidget {
    Q_OBJECT

public:
    explicit ImageWindow(QWidget *parent = nullptr);

    ImageCanvas *imageView() const { return _imageView; }

    // The proportions to settle to after a resize by the user; an empty size turns it off.
    void setContentAspectRatio(const QSize &ratio) { _aspect = ratio; }
    QSize contentAspectRatio() const { return _aspect; }
    // Resizing done by the program itself is not corrected, even when the window system reports
    // it later.
    void resizeContent(const QSize &size);
    // The content size with the right proportions nearest to the given one, within the limits.
    QSize aspectCorrected(const QSize &content) const;

signals:
    // Asked when the user closes the window; answering false keeps it open.
    void closeRequested(bool *allow);

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void settleToAspect();

    ImageCanvas *_imageView;
    QSize _aspect;
    QSize _requested;
    QTimer _settle;
};
