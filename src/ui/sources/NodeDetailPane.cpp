#include "ui/sources/NodeDetailPane.h"

#include "core/sources/Node.h"
#include "core/sources/NodeTimes.h"
#include "core/util/DescriptionText.h"
#include "ui/common/ClickableTextBlue.h"
#include "ui/common/DataAgeLine.h"
#include "ui/common/FailureLine.h"
#include "ui/sources/ImagePane.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTextBrowser>
#include <QTimer>
#include <QVBoxLayout>

NodeDetailPane::NodeDetailPane(QWidget *parent)
    : QWidget(parent), _nodeTitleField(new QLabel), _lastUpdatedField(new QLabel),
      _dataAgeField(new DataAgeLine), _failureField(new FailureLine), _imageView(new ImagePane),
      _nodeDescriptionTextField(new QTextBrowser),
      _refreshImageButton(new QPushButton(tr("Reload"))),
      _cancelDownloadButton(new QPushButton(tr("Cancel"))),
      _scheduleNodeButton(new QPushButton(tr("Schedule…"))),
      _zoomImageButton(new QPushButton(tr("Zoom"))),
      _revealImageButton(new QPushButton(tr("Show File")))
{
    QFont titleFont = _nodeTitleField->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.25);
    _nodeTitleField->setFont(titleFont);
    _nodeTitleField->setWordWrap(true);
    auto *link = new ClickableTextBlue;
    link->setToolTip(tr("Open the provider's page in your browser"));
    connect(link, &ClickableText::clicked, this,
            [this, link] { emit dataSourceLinkClicked(link->text()); });
    _dataSourceField = link;
    // One line: the update times, the data's age, and the failure line (if any) in the room
    // beside them.
    _lastUpdatedField->setForegroundRole(QPalette::PlaceholderText);
    auto *updates = new QHBoxLayout;
    updates->addWidget(_lastUpdatedField);
    updates->addSpacing(12);
    updates->addWidget(_dataAgeField);
    updates->addWidget(_failureField, 1);

    _nodeDescriptionTextField->setOpenExternalLinks(true);
    _nodeDescriptionTextField->setOpenLinks(true);
    _nodeDescriptionTextField->setMinimumHeight(60);
    auto *detailSplit = new QSplitter(Qt::Vertical);
    detailSplit->addWidget(_imageView);
    detailSplit->addWidget(_nodeDescriptionTextField);
    detailSplit->setStretchFactor(0, 4);
    detailSplit->setStretchFactor(1, 1);
    detailSplit->setSizes({480, 140});
    detailSplit->setChildrenCollapsible(false);

    _refreshImageButton->setToolTip(tr("Download this item again"));
    _cancelDownloadButton->setToolTip(tr("Stop downloading this item"));
    _scheduleNodeButton->setToolTip(tr("When this item is downloaded by itself"));
    _zoomImageButton->setToolTip(tr("Open the image in a window of its own"));
    _revealImageButton->setToolTip(tr("Show the downloaded file in the file manager"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(_refreshImageButton);
    buttons->addWidget(_cancelDownloadButton);
    buttons->addWidget(_scheduleNodeButton);
    buttons->addStretch(1);
    buttons->addWidget(_zoomImageButton);
    buttons->addWidget(_revealImageButton);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_nodeTitleField);
    layout->addWidget(_dataSourceField);
    layout->addLayout(updates);
    layout->addWidget(detailSplit, 1);
    layout->addLayout(buttons);
}

void NodeDetailPane::showNode(const Node *node, bool queued)
{
    const bool downloaded = node && node->fileDownloaded();
    _cancelDownloadButton->setEnabled(node && queued);
    _refreshImageButton->setEnabled(node != nullptr);
    _zoomImageButton->setEnabled(downloaded);
    _revealImageButton->setEnabled(downloaded);
    _scheduleNodeButton->setEnabled(node != nullptr);
    showTimes(node);
    if (!node) {
        _nodeTitleField->setText(QStringLiteral("Please select an item from the list."));
        _dataSourceField->setText(QString());
        _failureField->setFailure(QString());
        return;
    }
    _nodeTitleField->setText(node->nodeTitle());
    _dataSourceField->setText(node->dataSource());
    _failureField->setFailure(node->lastFailure());
}

void NodeDetailPane::showTimes(const Node *node)
{
    _lastUpdatedField->setText(node ? NodeTimes::updateLine(*node) : QString());
    _dataAgeField->showNode(node);
}

void NodeDetailPane::showImage(const QPixmap &image)
{
    _imageView->setPixmap(image);
}

void NodeDetailPane::showPlaceholder(const QString &name)
{
    _imageView->setPlaceholder(name);
}

void NodeDetailPane::showDescription(const QString &html)
{
    // Qt's HTML reader takes anything, so there is no failure to leave the page unchanged for.
    if (html == _descriptionHtml && !_descriptionPending)
        return;
    _descriptionHtml = html;
    _descriptionPending = true;
    if (isVisible())
        layOutPendingDescription();
}

void NodeDetailPane::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (_descriptionPending)
        _nodeDescriptionTextField->viewport()->installEventFilter(this);
}

bool NodeDetailPane::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint && watched == _nodeDescriptionTextField->viewport()) {
        watched->removeEventFilter(this);
        // The frame is handed on when this round of painting ends; the page comes after it.
        QTimer::singleShot(0, this, &NodeDetailPane::layOutPendingDescription);
    }
    return QWidget::eventFilter(watched, event);
}

void NodeDetailPane::layOutPendingDescription()
{
    if (!_descriptionPending || !isVisible())
        return;
    _descriptionPending = false;
    _nodeDescriptionTextField->setHtml(DescriptionText::lossyAscii(_descriptionHtml));
}
