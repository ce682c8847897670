#include "ui/alerts/AlertsView.h"

#include "core/settings/Settings.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/sources/NodeTimes.h"
#include "ui/common/DataAgeLine.h"
#include "ui/common/FailureLine.h"
#include "ui/common/FileManager.h"
#include "ui/common/TimeTicker.h"
#include "ui/common/ViewSizeKeeper.h"
#include "ui/sources/NodeScheduler.h"

#include <QApplication>
#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QVBoxLayout>

AlertsView::AlertsView(FlatGroup *group, ActivityLog *log, QWidget *parent)
    : QWidget(parent), _group(group), _log(log), _sizeKeeper(new ViewSizeKeeper(this))
{
    buildInterface();
    connectGroup();
    updateInterfaceForSelection();
}

AlertsView::~AlertsView() = default;

void AlertsView::buildInterface()
{
    _nodeListMenu = new QComboBox;
    _nodeListMenu->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    auto *menuLabel = new QLabel(tr("&Report:"));
    menuLabel->setBuddy(_nodeListMenu);
    _refreshButton = new QPushButton(tr("Reload"));
    _refreshButton->setToolTip(tr("Download the report shown again"));
    _cancelNodeDownloadButton = new QPushButton(tr("Cancel"));
    _cancelNodeDownloadButton->setToolTip(tr("Stop downloading the report shown"));
    _scheduleNodeButton = new QPushButton(tr("Schedule…"));
    _scheduleNodeButton->setToolTip(tr("Choose when the report shown is downloaded"));
    _dailyReportButton = new QPushButton(tr("Reload Daily Report"));

    auto *top = new QHBoxLayout;
    top->addWidget(menuLabel);
    top->addWidget(_nodeListMenu, 1);
    top->addWidget(_refreshButton);
    top->addWidget(_cancelNodeDownloadButton);
    top->addWidget(_scheduleNodeButton);
    top->addSpacing(12);
    top->addWidget(_dailyReportButton);

    // The bulletins line up their tables with blanks, so they are shown in a fixed-width font,
    // as plain text (never as markup), at a size that reads comfortably next to the rest of the
    // window.
    _nodeDataTextView = new QPlainTextEdit;
    _nodeDataTextView->setReadOnly(true);
    _nodeDataTextView->setUndoRedoEnabled(false);
    _nodeDataTextView->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    _nodeDataTextView->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    _nodeDataTextView->setTextInteractionFlags(Qt::TextSelectableByMouse |
                                               Qt::TextSelectableByKeyboard);
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (fixed.pointSizeF() > 0) {
        const qreal textSize = QApplication::font().pointSizeF();
        fixed.setPointSizeF(std::max({fixed.pointSizeF(), textSize, 10.0}));
    }
    _nodeDataTextView->setFont(fixed);

    _nodeStatusField = new QLabel;
    _nodeStatusField->setTextFormat(Qt::PlainText);
    _nodeLastUpdateField = new QLabel;
    _nodeLastUpdateField->setTextFormat(Qt::PlainText);
    _nodeLastUpdateField->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    _failureField = new FailureLine;
    _dataAgeField = new DataAgeLine;
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(_nodeStatusField);
    bottom->addWidget(_failureField, 1);
    bottom->addWidget(_dataAgeField);
    bottom->addSpacing(12);
    bottom->addWidget(_nodeLastUpdateField);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(_nodeDataTextView, 1);
    layout->addLayout(bottom);

    // activated, not currentIndexChanged: choosing the item already shown reads its report again
    // (after the cache was emptied, that shows the not-loaded text or fetches the report).
    connect(_nodeListMenu, &QComboBox::activated, this, &AlertsView::selectNodeFromList);
    connect(_refreshButton, &QPushButton::clicked, this, &AlertsView::refreshSelectedNodeData);
    connect(_dailyReportButton, &QPushButton::clicked, this, &AlertsView::refreshDailyWeatherNode);
    connect(_cancelNodeDownloadButton, &QPushButton::clicked, this,
            &AlertsView::cancelSelectedNodeDownload);
    connect(_scheduleNodeButton, &QPushButton::clicked, this,
            &AlertsView::openScheduleWindowForNode);
    connect(TimeTicker::shared(), &TimeTicker::ticked, this, &AlertsView::refreshTimes);
}

void AlertsView::connectGroup()
{
    // The group has done its part (queue, log) before it signals; what is left is the display.
    connect(_group, &NodeGroup::nodeStatusChanged, this, &AlertsView::nodeStatusChanged);
    connect(_group, &NodeGroup::nodeSettingsChanged, this, &AlertsView::nodeStatusChanged);
    connect(_group, &NodeGroup::nodeDataLoaded, this, &AlertsView::nodeDataLoaded);
    connect(_group, &NodeGroup::nodeDownloadFailed, this, &AlertsView::nodeDownloadFailed);
    // The reports are gone: what needs a data file must not be offered any more.
    connect(_group, &NodeGroup::groupCacheEmptied, this, &AlertsView::updateInterfaceForSelection);
    // The cancel button follows the queue, which a node leaves after its last status change.
    connect(_group, &NodeGroup::nodeLeftDownloadQueue, this, [this](const Node *node) {
        if (node == _group->selectedNode())
            updateInterfaceForSelection();
    });
}

Node *AlertsView::selectedNode() const
{
    return _group->selectedNode();
}

void AlertsView::awakeFromNib()
{
    loadFrameSize();
}

void AlertsView::loadDictionaryData(const QString &dictionaryFileName,
                                    const QString &dataFolderPath)
{
    if (!_group->loadDictionaryData(dictionaryFileName, dataFolderPath))
        return;
    createMenuItemsForNodes();
    // A remembered index that no longer fits the list (the file changed) selects the first
    // report; an empty list selects none.
    Node *selected = _group->selectNodeAtIndex(_group->lastAlertMenuIndex());
    _nodeListMenu->setCurrentIndex(_group->indexOf(selected));
    setTextForSelectedNode(selected);
    updateInterfaceForSelection();
}

void AlertsView::createMenuItemsForNodes()
{
    // Items are added by position, so repeated titles still stand for their own nodes.
    _nodeListMenu->clear();
    for (Node *node : _group->nodes())
        _nodeListMenu->addItem(node->nodeTitle());
    if (Node *first = _group->nodeAt(0))
        _dailyReportButton->setToolTip(tr("Download \"%1\" again").arg(first->nodeTitle()));
}

void AlertsView::selectNodeFromList()
{
    Node *node = _group->selectNodeAtIndex(_nodeListMenu->currentIndex());
    setTextForSelectedNode(node);
    updateInterfaceForSelection();
}

void AlertsView::setTextForSelectedNode(Node *node)
{
    // Choosing the text may queue the node, which refreshes the controls from within. A node
    // without data whose last download failed (perhaps at once, just now) says so.
    QString text = _group->textForSelectedNode(node);
    if (node && !node->fileDownloaded() && !_group->nodeIsInDownloadQueue(node) &&
        !node->lastFailure().isEmpty())
        text = failedText();
    setTextViewText(text);
    updateInterfaceForSelection();
}

void AlertsView::setTextViewText(const QString &text)
{
    // Wrapping a long report takes longer than a frame, and a view that is not on screen has no
    // width of its own yet: it would wrap the report once now and again when first shown. It
    // keeps the text until then.
    _textPending = !isVisible();
    if (_textPending) {
        _pendingText = text;
        return;
    }
    _pendingText.clear();
    clearTextViewText();
    _nodeDataTextView->setPlainText(text);
}

void AlertsView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // A copy: setting the text forgets the pending one.
    if (_textPending)
        setTextViewText(QString(_pendingText));
}

void AlertsView::clearTextViewText()
{
    _nodeDataTextView->clear();
}

void AlertsView::updateInterfaceForSelection()
{
    Node *node = _group->selectedNode();
    _nodeListMenu->setEnabled(_group->nodeCount() > 0);
    _dailyReportButton->setEnabled(_group->nodeCount() > 0);
    _refreshButton->setEnabled(node != nullptr);
    refreshTimes();
    if (!node) {
        _nodeStatusField->setText(QString());
        _scheduleNodeButton->setEnabled(false);
        _cancelNodeDownloadButton->setEnabled(false);
        _failureField->setFailure(QString());
        emit selectionChanged();
        return;
    }
    _nodeStatusField->setText(node->longStatus());
    _scheduleNodeButton->setEnabled(true);
    _cancelNodeDownloadButton->setEnabled(_group->nodeIsInDownloadQueue(node));
    _failureField->setFailure(node->lastFailure());
    emit selectionChanged();
}

void AlertsView::refreshTimes()
{
    const Node *node = _group->selectedNode();
    _nodeLastUpdateField->setText(node ? NodeTimes::updateLine(*node) : QString());
    _dataAgeField->showNode(node);
}

void AlertsView::refreshSelectedNodeData()
{
    _group->refreshSelectedNodeData();
}

void AlertsView::refreshDailyWeatherNode()
{
    _group->refreshDailyWeatherNode();
}

void AlertsView::cancelSelectedNodeDownload()
{
    _group->cancelSelectedNodeDownload();
}

void AlertsView::revealSelectedNodeData()
{
    Node *node = _group->selectedNode();
    if (node && node->fileDownloaded())
        FileManager::revealFile(node->filePath());
}

void AlertsView::openScheduleWindowForNode()
{
    Node *node = _group->selectedNode();
    if (!node || !_nodeSchedulerWindow)
        return;
    _nodeSchedulerWindow->setMyNode(node);
    // The sheet serves every view: only the view that opened it hears of its end, and only once.
    disconnect(_sheetEnd);
    _sheetEnd = connect(_nodeSchedulerWindow, &QDialog::finished, this,
                        &AlertsView::schedulerDidEnd, Qt::SingleShotConnection);
    _nodeSchedulerWindow->open();
}

void AlertsView::schedulerDidEnd(int returnCode)
{
    Q_UNUSED(returnCode);
    if (_nodeSchedulerWindow)
        _nodeSchedulerWindow->hide();
}

void AlertsView::nodeStatusChanged(Node *node)
{
    if (node == _group->selectedNode())
        updateInterfaceForSelection();
}

void AlertsView::nodeDataLoaded(Node *node)
{
    // Another report that arrives is logged by the group and stays out of sight until chosen.
    if (node != _group->selectedNode())
        return;
    // A new issue of the report being read (a scheduled update, most often) keeps the reader's
    // place; a report chosen from the menu starts at the top.
    QScrollBar *bar = _nodeDataTextView->verticalScrollBar();
    const int position = bar->value();
    setTextForSelectedNode(node);
    bar->setValue(position);
}

QString AlertsView::failedText()
{
    return QStringLiteral("The report could not be downloaded. Press \"Reload\" to try again.");
}

void AlertsView::nodeDownloadFailed(Node *node)
{
    if (node != _group->selectedNode())
        return;
    // Without a report, "Downloading data" would now be a lie; an older report stays. Nothing is
    // queued from here: a download that fails at once would otherwise fail again for ever.
    if (!node->fileDownloaded())
        setTextViewText(failedText());
    updateInterfaceForSelection();
}

void AlertsView::loadFrameSize()
{
    _sizeKeeper->restore(QLatin1String(kViewSizeKey));
    _group->setLastAlertMenuIndex(Settings::store().value(QLatin1String(kMenuIndexKey)).toInt());
}

void AlertsView::saveFrameSize()
{
    _sizeKeeper->store(QLatin1String(kViewSizeKey));
    Settings::store().setValue(QLatin1String(kMenuIndexKey), _group->lastAlertMenuIndex());
}

void AlertsView::destroyAllNodes()
{
    _group->destroyAllNodes();
    _nodeListMenu->clear();
    updateInterfaceForSelection();
}

void AlertsView::cleanup()
{
    destroyAllNodes();
    saveFrameSize();
}
