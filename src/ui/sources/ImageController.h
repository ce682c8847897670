#pragma once

#include <QObject>
#include <QPixmap>
#include <QSizeF>
#include <QString>

#include <memory>

class GroupView;
class ImageCanvas;
class ImageWindow;
class Node;

// One floating image window and what it can do: zoom in steps within its limits, return to its
// default size, centre, minimise. Closing the window hides it; the controller lives on, so the
// next opening shows the same window where the user left it.
class ImageController : public QObject {
    Q_OBJECT

public:
    // A controller with its window shown, or none (with a console message) when the file is not
    // an image.
    static std::unique_ptr<ImageController> create(const QString &path, const QString &name,
                                                   const QString &URL, Node *node,
                                                   GroupView *delegate);
    ~ImageController() override;

    QString path() const { return _path; }
    QString name() const { return _name; }
    QString URL() const { return _URL; }
    Node *node() const { return _node; }
    ImageWindow *window() const { return _imageWindow.get(); }
    ImageCanvas *imageView() const { return _imageView; }

    // Reloads the image (a large one beside the event loop, the window keeping the old picture
    // until then); brings the window to the front only when asked to.
    void updateWithOpen(bool open);
    void setWindowFrameAttributes();
    // Gives the whole window frame this size, its top-left corner staying where it is.
    void zoomToNewSize(const QSizeF &size, bool animate);

    // zoomOut() makes the window larger and zoomIn() smaller, by a tenth each step.
    void zoomIn();
    void zoomOut();
    void viewAtMinSize();
    void viewAtMaxSize();
    void viewAtDefaultSize();
    void centerWindow();
    void miniaturizeWindow();
    // A save command that reaches an image window has nothing to save.
    void saveDocument() {}
    bool windowShouldClose();

    QPixmap getScaledImageFromFileAtPath(const QString &path) const;

    QSizeF minimumContentSize() const;
    QSizeF maximumContentSize() const;
    float defaultWidth() const { return _dwidth; }
    float defaultHeight() const { return _dheight; }

private:
    ImageController(const QString &path, const QString &name, const QString &URL, Node *node,
                    GroupView *delegate);
    void buildCommands();

    GroupView *_delegate = nullptr;
    std::unique_ptr<ImageWindow> _imageWindow;
    ImageCanvas *_imageView = nullptr;
    QString _path;
    QString _name;
    QString _URL;
    Node *_node = nullptr;
    float _dwidth = 0;
    float _dheight = 0;
    // The latest reload asked for: an older one that finishes later is not shown.
    quint64 _update = 0;
};
