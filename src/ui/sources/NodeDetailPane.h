#pragma once

#include <QPixmap>
#include <QString>
#include <QWidget>

class DataAgeLine;
class FailureLine;
class ImagePane;
class Node;
class QLabel;
class QPushButton;
class QTextBrowser;

// The right-hand side of an image view: the selected node's title, its source as a link, its
// last and next update, why its last download failed, its picture above its description, and the
// buttons that act on it. It shows what it is given; what the buttons do is the view's business.
class NodeDetailPane : public QWidget {
    Q_OBJECT

public:
    explicit NodeDetailPane(QWidget *parent = nullptr);

    // The texts and the buttons for the selected node, or for no selection (none). Cancelling
    // is offered while the node waits in its group's download queue (queued).
    void showNode(const Node *node, bool queued);
    // Only the node's times: its last and next update, and its data's time and age, which
    // change as time passes and with the zone the times are shown in.
    void showTimes(const Node *node);
    void showImage(const QPixmap &image);
    // One of the application's named pictures (splash, downloading, no data).
    void showPlaceholder(const QString &name);
    // An HTML page in the description area. Laying a page out costs milliseconds, more than a
    // frame the first time a page needs its fonts: the same page is not laid out again, and a
    // page given while the pane is not on screen waits until the pane has first been drawn, so
    // that the window (at start-up) or a view shown for the first time appears without waiting
    // for it.
    void showDescription(const QString &html);

    ImagePane *imageView() const { return _imageView; }
    QTextBrowser *descriptionView() const { return _nodeDescriptionTextField; }
    QLabel *nodeTitleField() const { return _nodeTitleField; }
    QLabel *dataSourceField() const { return _dataSourceField; }
    QLabel *lastUpdatedField() const { return _lastUpdatedField; }
    DataAgeLine *dataAgeField() const { return _dataAgeField; }
    FailureLine *failureField() const { return _failureField; }
    QPushButton *cancelDownloadButton() const { return _cancelDownloadButton; }
    QPushButton *refreshImageButton() const { return _refreshImageButton; }
    QPushButton *zoomImageButton() const { return _zoomImageButton; }
    QPushButton *revealImageButton() const { return _revealImageButton; }
    QPushButton *scheduleNodeButton() const { return _scheduleNodeButton; }

signals:
    // The data-source line was clicked; the address is its text.
    void dataSourceLinkClicked(const QString &address);

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void layOutPendingDescription();

    QLabel *_nodeTitleField;
    QLabel *_dataSourceField = nullptr;
    QLabel *_lastUpdatedField;
    DataAgeLine *_dataAgeField;
    FailureLine *_failureField;
    ImagePane *_imageView;
    QTextBrowser *_nodeDescriptionTextField;
    QPushButton *_refreshImageButton;
    QPushButton *_cancelDownloadButton;
    QPushButton *_scheduleNodeButton;
    QPushButton *_zoomImageButton;
    QPushButton *_revealImageButton;
    // The page shown, and whether it still waits to be laid out.
    QString _descriptionHtml;
    bool _descriptionPending = false;
};
