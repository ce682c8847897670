#include "ui/sources/ImageController.h"

#include "ui/sources/ImageCanvas.h"
#include "ui/sources/ImageWindow.h"
#include "ui/sources/ScaledImage.h"

#include <QAction>
#include <QDebug>
#include <QGuiApplication>
#include <QLayout>
#include <QScreen>
#include <QStyle>

#include <cmath>

std::unique_ptr<ImageController> ImageController::create(const QString &path, const QString &name,
                                                         const QString &URL, Node *node,
                                                         GroupView *delegate)
{
    std::unique_ptr<ImageController> controller(
        new ImageController(path, name, URL, node, delegate));
    const QPixmap image = controller->getScaledImageFromFileAtPath(path);
    if (image.isNull()) {
        qWarning().noquote() << QStringLiteral("ImageController (%1): image == nil").arg(name);
        return nullptr;
    }

    ImageWindow *window = controller->_imageWindow.get();
    window->setWindowTitle(name);
    window->resizeContent(image.deviceIndependentSize().toSize());
    controller->_imageView->setPixmap(image);
    controller->setWindowFrameAttributes();
    return controller;
}

ImageController::ImageController(const QString &path, const QString &name, const QString &URL,
                                 Node *node, GroupView *delegate)
    : _delegate(delegate), _imageWindow(std::make_unique<ImageWindow>()), _path(path), _name(name),
      _URL(URL), _node(node)
{
    _imageView = _imageWindow->imageView();
    _imageView->setToolTip(tr("Drag to move. Right-click for sizes; Ctrl++ and Ctrl+- zoom."));
    connect(_imageWindow.get(), &ImageWindow::closeRequested, this,
            [this](bool *allow) { *allow = windowShouldClose(); });
    buildCommands();
}

ImageController::~ImageController() = default;

void ImageController::buildCommands()
{
    const struct {
        QString text;
        QKeySequence shortcut;
        void (ImageController::*action)();
    } commands[] = {
        {tr("Larger"), QKeySequence(Qt::CTRL | Qt::Key_Plus), &ImageController::zoomOut},
        {tr("Smaller"), QKeySequence(Qt::CTRL | Qt::Key_Minus), &ImageController::zoomIn},
        {tr("Default Size"), QKeySequence(Qt::CTRL | Qt::Key_0),
         &ImageController::viewAtDefaultSize},
        {tr("Smallest"), QKeySequence(), &ImageController::viewAtMinSize},
        {tr("Largest"), QKeySequence(), &ImageController::viewAtMaxSize},
        {tr("Center"), QKeySequence(), &ImageController::centerWindow},
        {tr("Minimize"), QKeySequence(Qt::CTRL | Qt::Key_M), &ImageController::miniaturizeWindow},
        {tr("Close"), QKeySequence::Close, nullptr},
    };
    for (const auto &command : commands) {
        auto *action = new QAction(command.text, _imageWindow.get());
        if (!command.shortcut.isEmpty())
            action->setShortcut(command.shortcut);
        action->setShortcutContext(Qt::WindowShortcut);
        if (command.action)
            connect(action, &QAction::triggered, this, command.action);
        else
            connect(action, &QAction::triggered, _imageWindow.get(), &QWidget::close);
        _imageWindow->addAction(action);
    }
    // Ctrl+= is where Ctrl++ lives on most keyboards.
    auto *larger = new QAction(_imageWindow.get());
    larger->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Equal));
    connect(larger, &QAction::triggered, this, &ImageController::zoomOut);
    _imageWindow->addAction(larger);
    _imageWindow->setContextMenuPolicy(Qt::ActionsContextMenu);
}

QPixmap ImageController::getScaledImageFromFileAtPath(const QString &path) const
{
    return ScaledImage::fromFile(path, _imageWindow ? _imageWindow->devicePixelRatioF() : 1.0);
}

void ImageController::setWindowFrameAttributes()
{
    // The picture's own size is what the layout gives it; lay the window out before measuring.
    if (QLayout *layout = _imageWindow->layout())
        layout->activate();
    _dwidth = float(_imageView->width());
    _dheight = float(_imageView->height());
    const QSizeF minimum = minimumContentSize();
    const QSizeF maximum = maximumContentSize();
    _imageWindow->setMinimumSize(int(std::ceil(minimum.width())), int(std::ceil(minimum.height())));
    _imageWindow->setMaximumSize(int(maximum.width()), int(maximum.height()));
    _imageWindow->setContentAspectRatio(QSize(int(_dwidth), int(_dheight)));
    _imageWindow->show();
    _imageWindow->raise();
    _imageWindow->activateWindow();
}

QSizeF ImageController::minimumContentSize() const
{
    return QSizeF(0.25f * _dwidth, 0.25f * _dheight);
}

QSizeF ImageController::maximumContentSize() const
{
    return QSizeF(1.5f * _dwidth, 1.5f * _dheight);
}

void ImageController::updateWithOpen(bool open)
{
    const quint64 update = ++_update;
    if (ScaledImage::isLarge(_path)) {
        ScaledImage::fromFileInBackground(_path, _imageWindow->devicePixelRatioF(), this,
                                          [this, update](const QPixmap &image) {
                                              if (update == _update)
                                                  _imageView->setPixmap(image);
                                          });
    } else {
        _imageView->setPixmap(getScaledImageFromFileAtPath(_path));
    }
    if (open) {
        _imageWindow->show();
        _imageWindow->raise();
        _imageWindow->activateWindow();
    }
}

void ImageController::zoomToNewSize(const QSizeF &size, bool animate)
{
    Q_UNUSED(animate);
    // The size is the whole frame's: what the decorations take comes off the content.
    const QRect frame = _imageWindow->frameGeometry();
    const QSize decorations = frame.size() - _imageWindow->geometry().size();
    const QSize content(int(size.width()) - decorations.width(),
                        int(size.height()) - decorations.height());
    _imageWindow->resizeContent(content.expandedTo(QSize(1, 1)));
    _imageWindow->move(frame.topLeft());
}

void ImageController::zoomOut()
{
    const QSize content = _imageWindow->size();
    const float w = float(double(content.width()) * 1.1);
    const float h = float(double(content.height()) * 1.1);
    const QSizeF maximum = maximumContentSize();
    if (maximum.width() >= w && maximum.height() >= h)
        zoomToNewSize(QSizeF(w, h), false);
    else
        zoomToNewSize(maximum, false);
}

void ImageController::zoomIn()
{
    const QSize content = _imageWindow->size();
    const float w = float(double(content.width()) / 1.1);
    const float h = float(double(content.height()) / 1.1);
    const QSizeF minimum = minimumContentSize();
    if (w >= minimum.width() && h >= minimum.height())
        zoomToNewSize(QSizeF(w, h), false);
    else
        zoomToNewSize(minimum, false);
}

void ImageController::viewAtMinSize()
{
    zoomToNewSize(minimumContentSize(), false);
}

void ImageController::viewAtMaxSize()
{
    zoomToNewSize(maximumContentSize(), false);
}

void ImageController::viewAtDefaultSize()
{
    zoomToNewSize(QSizeF(_dwidth, _dheight), false);
    centerWindow();
}

void ImageController::centerWindow()
{
    const QScreen *screen =
        _imageWindow->screen() ? _imageWindow->screen() : QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect frame = _imageWindow->frameGeometry();
    const QRect target = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, frame.size(),
                                             screen->availableGeometry());
    _imageWindow->move(target.topLeft());
}

void ImageController::miniaturizeWindow()
{
    _imageWindow->showMinimized();
}

bool ImageController::windowShouldClose()
{
    return true;
}
