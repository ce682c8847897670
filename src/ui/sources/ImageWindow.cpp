#include "ui/sources/ImageWindow.h"

#include "ui/sources/ImageCanvas.h"

#include <QCloseEvent>
#include <QResizeEvent>
#include <QVBoxLayout>

ImageWindow::ImageWindow(QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                          Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint),
      _imageView(new ImageCanvas)
{
    setObjectName(QStringLiteral("ImageWindow"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_imageView);

    _settle.setSingleShot(true);
    _settle.setInterval(250);
    connect(&_settle, &QTimer::timeout, this, &ImageWindow::settleToAspect);
}

QSize ImageWindow::aspectCorrected(const QSize &content) const
{
    if (_aspect.isEmpty())
        return content;
    const double ratio = double(_aspect.height()) / double(_aspect.width());
    QSize result(content.width(), int(content.width() * ratio + 0.5));
    // Keep within the limits, moving along the proportion line.
    if (result.height() > maximumHeight())
        result = QSize(int(maximumHeight() / ratio), maximumHeight());
    if (result.height() < minimumHeight())
        result = QSize(int(minimumHeight() / ratio + 0.5), minimumHeight());
    return result.boundedTo(maximumSize()).expandedTo(minimumSize());
}

void ImageWindow::closeEvent(QCloseEvent *event)
{
    bool allow = true;
    emit closeRequested(&allow);
    if (allow)
        event->accept();
    else
        event->ignore();
}

void ImageWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (event->size() == _requested)
        return;
    if (isVisible() && !isMaximized() && !isFullScreen())
        _settle.start();
}

void ImageWindow::settleToAspect()
{
    const QSize corrected = aspectCorrected(size());
    if (corrected != size())
        resizeContent(corrected);
}

void ImageWindow::resizeContent(const QSize &size)
{
    _requested = size.boundedTo(maximumSize()).expandedTo(minimumSize());
    resize(size);
}
