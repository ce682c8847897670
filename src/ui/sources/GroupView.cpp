#include "ui/sources/GroupView.h"

#include "core/settings/Settings.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/sources/OutlineSelectionModel.h"
#include "core/util/DescriptionText.h"
#include "core/util/GeometryText.h"
#include "core/util/SplitLayout.h"
#include "ui/common/ClickableTextBlue.h"
#include "ui/common/FailureLine.h"
#include "ui/common/FileManager.h"
#include "ui/common/NamedImage.h"
#include "ui/log/ActivityLog.h"
#include "ui/sources/ImageController.h"
#include "ui/sources/ImagePane.h"
#include "ui/sources/NodeScheduler.h"
#include "ui/sources/ScaledImage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QTextBrowser>
#include <QThreadPool>
#include <QTreeView>
#include <QVBoxLayout>

GroupView::GroupView(DomainGroup *group, ActivityLog *log, QWidget *parent)
    : QWidget(parent), _group(group), _model(new GroupOutlineModel(group, this)), _log(log)
{
    buildInterface();
    connectGroup();
}

GroupView::~GroupView() = default;

// --- Interface --------------------------------------------------------------------------------

void GroupView::buildInterface()
{
    _domainsList = new QTreeView;
    _domainsList->setModel(_model);
    auto *selection = new OutlineSelectionModel(_model, _domainsList);
    selection->setWillSelect(
        [this](const QModelIndex &index) { outlineShouldSelectItem(_model->itemForIndex(index)); });
    _domainsList->setSelectionModel(selection);
    _domainsList->setSelectionMode(QAbstractItemView::SingleSelection);
    _domainsList->setSelectionBehavior(QAbstractItemView::SelectRows);
    _domainsList->setUniformRowHeights(true);
    _domainsList->setAllColumnsShowFocus(true);
    _domainsList->setExpandsOnDoubleClick(false);
    _domainsList->header()->setStretchLastSection(false);
    _domainsList->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    _domainsList->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);

    _refreshDomainButton = new QPushButton(tr("Reload Group"));
    _refreshDomainButton->setToolTip(tr("Download every item of the selected group again"));

    auto *outlinePane = new QWidget;
    auto *outlineLayout = new QVBoxLayout(outlinePane);
    outlineLayout->setContentsMargins(0, 0, 0, 0);
    outlineLayout->addWidget(_domainsList, 1);
    outlineLayout->addWidget(_refreshDomainButton);

    _nodeTitleField = new QLabel;
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
    // One line, with the failure line (if any) in the room beside it.
    _lastUpdatedField = new QLabel;
    _lastUpdatedField->setForegroundRole(QPalette::PlaceholderText);
    _failureField = new FailureLine;
    auto *updates = new QHBoxLayout;
    updates->addWidget(_lastUpdatedField);
    updates->addWidget(_failureField, 1);

    _imageView = new ImagePane;

    _nodeDescriptionTextField = new QTextBrowser;
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

    _refreshImageButton = new QPushButton(tr("Reload"));
    _refreshImageButton->setToolTip(tr("Download this item again"));
    _cancelDownloadButton = new QPushButton(tr("Cancel"));
    _cancelDownloadButton->setToolTip(tr("Stop downloading this item"));
    _scheduleNodeButton = new QPushButton(tr("Schedule…"));
    _scheduleNodeButton->setToolTip(tr("When this item is downloaded by itself"));
    _zoomImageButton = new QPushButton(tr("Zoom"));
    _zoomImageButton->setToolTip(tr("Open the image in a window of its own"));
    _revealImageButton = new QPushButton(tr("Show File"));
    _revealImageButton->setToolTip(tr("Show the downloaded file in the file manager"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(_refreshImageButton);
    buttons->addWidget(_cancelDownloadButton);
    buttons->addWidget(_scheduleNodeButton);
    buttons->addStretch(1);
    buttons->addWidget(_zoomImageButton);
    buttons->addWidget(_revealImageButton);

    auto *detailPane = new QWidget;
    auto *detailLayout = new QVBoxLayout(detailPane);
    detailLayout->setContentsMargins(0, 0, 0, 0);
    detailLayout->addWidget(_nodeTitleField);
    detailLayout->addWidget(_dataSourceField);
    detailLayout->addLayout(updates);
    detailLayout->addWidget(detailSplit, 1);
    detailLayout->addLayout(buttons);

    _splitView = new QSplitter(Qt::Horizontal);
    _splitView->addWidget(outlinePane);
    _splitView->addWidget(detailPane);
    // Only the detail pane can be collapsed: the outline is how everything else is reached.
    _splitView->setCollapsible(0, false);
    _splitView->setCollapsible(1, true);
    _splitView->setStretchFactor(0, 0);
    _splitView->setStretchFactor(1, 1);
    _splitView->setSizes({260, 640});

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(_splitView);

    connect(_domainsList, &QTreeView::expanded, this, &GroupView::userExpanded);
    connect(_domainsList, &QTreeView::collapsed, this, &GroupView::userCollapsed);
    connect(_domainsList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &GroupView::outlineSelectionDidChange);

    connect(_refreshImageButton, &QPushButton::clicked, this, &GroupView::refreshSelectedNodeData);
    connect(_refreshDomainButton, &QPushButton::clicked, this,
            &GroupView::refreshSelectedDomainNodes);
    connect(_cancelDownloadButton, &QPushButton::clicked, this,
            &GroupView::cancelSelectedNodeDownload);
    connect(_scheduleNodeButton, &QPushButton::clicked, this,
            &GroupView::openScheduleWindowForNode);
    connect(_zoomImageButton, &QPushButton::clicked, this, &GroupView::zoomSelectedNodeData);
    connect(_revealImageButton, &QPushButton::clicked, this, &GroupView::revealSelectedNodeData);
}

void GroupView::connectGroup()
{
    connect(_group, &NodeGroup::nodeStatusChanged, this, &GroupView::nodeStatusChanged);
    connect(_group, &NodeGroup::nodeSettingsChanged, this, &GroupView::nodeSettingsChanged);
    connect(_group, &NodeGroup::nodeDataLoaded, this, &GroupView::nodeDataLoaded);
    connect(_group, &NodeGroup::nodeDownloadFailed, this, &GroupView::nodeDownloadFailed);
    // The data files are gone: the commands that need one must not be offered any more.
    connect(_group, &NodeGroup::groupCacheEmptied, this, &GroupView::updateInterfaceForSelection);
    connect(_group, &NodeGroup::nodeLeftDownloadQueue, this, [this](const Node *node) {
        if (node == _group->selectedNode())
            updateInterfaceForSelection();
    });
}

void GroupView::awakeFromNib()
{
    // Nine points per level, in this screen's pixels.
    _domainsList->setIndentation(qRound(9.0 * logicalDpiX() / 72.0));
    connect(_domainsList, &QTreeView::doubleClicked, this, &GroupView::domainListDoubleClicked);
}

QString GroupView::groupName() const
{
    return _group->groupName();
}

int GroupView::groupNumber() const
{
    return _group->groupNumber();
}

QString GroupView::viewSizeKey() const
{
    return groupName() + QStringLiteral("ViewSize");
}

QString GroupView::splitViewRectsKey() const
{
    return groupName() + QStringLiteral("ViewSplitViewRects");
}

QString GroupView::lastNodeViewedKey() const
{
    return groupName() + QStringLiteral(" LastNodeViewed");
}

// --- Loading and layout -----------------------------------------------------------------------

void GroupView::loadDomainDataForGroup(const QString &groupName, int groupNumber,
                                       const QString &dictionaryFileName,
                                       const QString &dataFolderPath)
{
    // The layout keys carry the group's name, so the name comes first; the layout is restored
    // before the file is read, so that a missing file still leaves it restored.
    _group->setGroup(groupName, groupNumber, dataFolderPath);
    loadFrameSize();
    _placeholders = DomainGroup::placeholdersForGroup(groupNumber);
    showSplash();
    if (!_group->loadDefinitionFile(dictionaryFileName))
        return;
    _model->reloadData();
    restoreExpansion();
}

QPixmap GroupView::splashImage() const
{
    return NamedImage::pixmap(_placeholders.splash, devicePixelRatioF());
}

QPixmap GroupView::noDataImage() const
{
    return NamedImage::pixmap(_placeholders.noData, devicePixelRatioF());
}

QPixmap GroupView::downloadingImage() const
{
    return NamedImage::pixmap(_placeholders.downloading, devicePixelRatioF());
}

QPixmap GroupView::shownImage() const
{
    return _imageView->pixmap();
}

void GroupView::restoreExpansion()
{
    _restoringExpansion = true;
    for (Domain *domain : _group->domains()) {
        const QModelIndex index = _model->indexForDomain(domain);
        if (DomainGroup::expansionState(domain->domainName()) != 2)
            _domainsList->expand(index);
        else
            _domainsList->collapse(index);
    }
    _restoringExpansion = false;
}

void GroupView::userExpanded(const QModelIndex &index)
{
    if (_restoringExpansion)
        return;
    if (const OutlineItem *item = _model->itemForIndex(index))
        DomainGroup::setExpansionState(item->itemName(), 1);
}

void GroupView::userCollapsed(const QModelIndex &index)
{
    if (_restoringExpansion)
        return;
    if (const OutlineItem *item = _model->itemForIndex(index))
        DomainGroup::setExpansionState(item->itemName(), 2);
}

void GroupView::applicationDidFinishLaunching()
{
    updateInterfaceForSelection();
    clearDescriptionField();
}

void GroupView::loadFrameSize()
{
    QSettings &settings = Settings::store();
    const QString size = settings.value(viewSizeKey()).toString();
    if (!size.isEmpty())
        resize(GeometryText::toViewSize(size));

    if (!_splitView)
        return;
    const QStringList stored = settings.value(splitViewRectsKey()).toStringList();
    if (stored.isEmpty())
        return;
    QList<QRect> current;
    for (int i = 0; i < _splitView->count(); ++i)
        current.append(_splitView->widget(i)->geometry());
    const bool sideBySide = _splitView->orientation() == Qt::Horizontal;
    const QList<QRect> restored = SplitLayout::restoredRects(stored, current, sideBySide);

    QList<int> sizes;
    for (const QRect &rect : restored)
        sizes.append(std::max(0, sideBySide ? rect.width() : rect.height()));
    _splitView->setSizes(sizes);
}

void GroupView::saveFrameSize()
{
    // Never on screen, the panes were never laid out: their frames are placeholders, and storing
    // them would narrow the outline at every start. What was stored stays.
    if (!_laidOut)
        return;
    QSettings &settings = Settings::store();
    settings.setValue(viewSizeKey(), GeometryText::fromSize(size()));
    if (!_splitView)
        return;
    QList<QRect> frames;
    QList<bool> collapsed;
    const QList<int> sizes = _splitView->sizes();
    for (int i = 0; i < _splitView->count(); ++i) {
        frames.append(_splitView->widget(i)->geometry());
        collapsed.append(sizes.value(i) == 0);
    }
    settings.setValue(splitViewRectsKey(), SplitLayout::storedRects(frames, collapsed));
}

void GroupView::destroyAllNodes()
{
    _group->destroyAllNodes();
}

void GroupView::cleanup()
{
    saveFrameSize();
    destroyAllNodes();
    destroyAllImageWindows();
}

// --- Selection --------------------------------------------------------------------------------

bool GroupView::outlineShouldSelectItem(OutlineItem *item)
{
    if (!item || !item->isNode()) {
        _group->setSelectedNode(nullptr);
        _group->setSelectedDomain(item ? static_cast<Domain *>(item) : nullptr);
        setLastNodeViewed(QString());
        showSplash();
        clearDescriptionField();
        updateInterfaceForSelection();
        return true;
    }

    auto *node = static_cast<Node *>(item);
    _group->setSelectedDomain(nullptr);
    if (node == _group->selectedNode()) {
        updateInterfaceForSelection();
        return true;
    }
    _group->setSelectedNode(node);
    setLastNodeViewed(node->itemName());
    displayImageForNode(node);
    displayDescriptionForNode(node);
    updateInterfaceForSelection();
    return true;
}

void GroupView::outlineSelectionDidChange()
{
    if (_domainsList->selectionModel()->hasSelection())
        return;
    _group->setSelectedNode(nullptr);
    _group->setSelectedDomain(nullptr);
    showSplash();
    updateInterfaceForSelection();
    clearDescriptionField();
}

void GroupView::domainListDoubleClicked()
{
    if (!_domainsList->selectionModel()->hasSelection())
        return;
    if (Node *node = _group->selectedNode()) {
        if (node->fileDownloaded())
            zoomSelectedNodeData();
        return;
    }
    if (Domain *domain = _group->selectedDomain()) {
        const QModelIndex index = _model->indexForDomain(domain);
        if (_domainsList->isExpanded(index))
            _domainsList->collapse(index);
        else
            _domainsList->expand(index);
    }
}

bool GroupView::hasSelectedNode() const
{
    return _group->selectedNode() != nullptr;
}

Node *GroupView::selectedNode() const
{
    return _group->selectedNode();
}

Domain *GroupView::selectedDomain() const
{
    return _group->selectedDomain();
}

void GroupView::setLastNodeViewed(const QString &name)
{
    Settings::store().setValue(lastNodeViewedKey(), name);
}

// --- Display ----------------------------------------------------------------------------------

void GroupView::showImage(const QPixmap &image)
{
    _imageView->setPixmap(image);
}

void GroupView::showPlaceholder(const QString &name)
{
    _imageView->setPlaceholder(name);
}

void GroupView::showSplash()
{
    showPlaceholder(_placeholders.splash);
}

void GroupView::updateInterfaceForSelection()
{
    Node *node = _group->selectedNode();
    const bool downloaded = node && node->fileDownloaded();
    _cancelDownloadButton->setEnabled(node && _group->nodeIsInDownloadQueue(node));
    _refreshImageButton->setEnabled(node != nullptr);
    _zoomImageButton->setEnabled(downloaded);
    _revealImageButton->setEnabled(downloaded);
    _scheduleNodeButton->setEnabled(node != nullptr);
    _refreshDomainButton->setEnabled(!node && _group->selectedDomain());

    emit selectionChanged();
    if (!node) {
        _nodeTitleField->setText(QStringLiteral("Please select an item from the list."));
        _dataSourceField->setText(QString());
        _lastUpdatedField->setText(QString());
        _failureField->setFailure(QString());
        return;
    }
    _nodeTitleField->setText(node->nodeTitle());
    _dataSourceField->setText(node->dataSource());
    if (node->autoUpdates())
        _lastUpdatedField->setText(QStringLiteral("Last Updated: %1, Next Update: %2")
                                       .arg(node->lastUpdate(), node->nextUpdate()));
    else
        _lastUpdatedField->setText(QStringLiteral("Last Updated: %1").arg(node->lastUpdate()));
    _failureField->setFailure(node->lastFailure());
}

void GroupView::displayImageForNode(Node *node)
{
    if (node->fileDownloaded()) {
        const QPixmap image = getScaledImageFromFileAtPath(node->filePath());
        if (!image.isNull()) {
            showImage(image);
            updateImageWindowForNode(node);
            updateInterfaceForSelection();
            return;
        }
        showPlaceholder(_placeholders.noData);
    } else {
        // Queued already, or queued now when missing data is fetched: either way it is coming,
        // unless its download failed at once (an address that cannot be fetched) and it has left
        // the queue again.
        const bool coming = _group->queueMissingData(node) && _group->nodeIsInDownloadQueue(node);
        showPlaceholder(coming ? _placeholders.downloading : _placeholders.noData);
    }
    updateInterfaceForSelection();
}

QPixmap GroupView::getScaledImageFromFileAtPath(const QString &path) const
{
    return ScaledImage::fromFile(path, devicePixelRatioF());
}

bool GroupView::showHtml(const QString &html)
{
    // Laying out a page costs milliseconds: the same page is not laid out again, and a view that
    // is not on screen lays its page out when it is first shown.
    if (html == _descriptionHtml && !_descriptionPending)
        return true;
    _descriptionHtml = html;
    _descriptionPending = !isVisible();
    if (!_descriptionPending)
        _nodeDescriptionTextField->setHtml(DescriptionText::lossyAscii(html));
    // Qt's HTML reader takes anything; there is no failure to leave the view unchanged for.
    return true;
}

void GroupView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    _laidOut = true;
    if (_descriptionPending) {
        _descriptionPending = false;
        _nodeDescriptionTextField->setHtml(DescriptionText::lossyAscii(_descriptionHtml));
    }
}

void GroupView::displayDescriptionForNode(Node *node)
{
    if (!_nodeDescriptionTextField)
        return;
    if (!node || !DescriptionText::isShowable(node->itemDescription())) {
        clearDescriptionField();
        return;
    }
    showHtml(node->itemDescription());
}

void GroupView::clearDescriptionField()
{
    if (_nodeDescriptionTextField)
        showHtml(_defaultDescription);
}

// --- Node events ------------------------------------------------------------------------------

void GroupView::nodeStatusChanged(Node *node)
{
    _model->refreshNode(node);
    if (node == _group->selectedNode())
        updateInterfaceForSelection();
}

void GroupView::nodeSettingsChanged(Node *node)
{
    if (node == _group->selectedNode())
        updateInterfaceForSelection();
}

void GroupView::nodeDataLoaded(Node *node)
{
    // An open image window is where a user watches a feed, often on another screen: it shows
    // every new picture of its node, selected or not.
    if (node == _group->selectedNode())
        displayImageForNode(node);
    else
        updateImageWindowForNode(node);
}

void GroupView::nodeDownloadFailed(Node *node)
{
    if (node != _group->selectedNode())
        return;
    // Without data the "downloading" picture would now be a lie. The node is not queued again
    // from here: a download that fails at once would otherwise fail again for ever.
    if (!node->fileDownloaded())
        showPlaceholder(_placeholders.noData);
    updateInterfaceForSelection();
}

// --- Commands ---------------------------------------------------------------------------------

void GroupView::refreshSelectedNodeData()
{
    _group->refreshSelectedNodeData();
}

void GroupView::refreshSelectedDomainNodes()
{
    _group->refreshSelectedDomainNodes();
}

void GroupView::cancelSelectedNodeDownload()
{
    _group->cancelSelectedNodeDownload();
}

void GroupView::openScheduleWindowForNode()
{
    Node *node = _group->selectedNode();
    if (!node || !_nodeSchedulerWindow)
        return;
    _nodeSchedulerWindow->setMyNode(node);
    disconnect(_nodeSchedulerWindow, &QDialog::finished, nullptr, nullptr);
    connect(_nodeSchedulerWindow, &QDialog::finished, this, &GroupView::schedulerDidEnd);
    _nodeSchedulerWindow->open();
}

void GroupView::schedulerDidEnd(int returnCode)
{
    Q_UNUSED(returnCode);
    if (_nodeSchedulerWindow)
        _nodeSchedulerWindow->hide();
}

void GroupView::zoomSelectedNodeData()
{
    Node *node = _group->selectedNode();
    if (node && node->fileType() == 0)
        openImageWindowForNode(node);
}

void GroupView::revealSelectedNodeData()
{
    Node *node = _group->selectedNode();
    if (node && node->fileType() == 0)
        FileManager::revealFile(node->filePath());
}

void GroupView::saveNodeImage()
{
    Node *node = _group->selectedNode();
    if (!node || node->fileType() != 0)
        return;
    auto *panel = new QFileDialog(window(), tr("Save a Copy"),
                                  Node::pathInFolder(QDir::homePath(), node->fileName()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setWindowModality(Qt::WindowModal);
    panel->selectFile(node->fileName());
    connect(panel, &QFileDialog::finished, this, [this, panel](int result) {
        const QStringList chosen = panel->selectedFiles();
        savePanelDidEnd(result, chosen.value(0));
    });
    panel->open();
}

void GroupView::savePanelDidEnd(int returnCode, const QString &chosenPath)
{
    if (returnCode != QDialog::Accepted || chosenPath.isEmpty())
        return;
    Node *node = _group->selectedNode();
    if (!node || node->fileType() != 0)
        return;
    if (!node->fileDownloaded()) {
        showSaveError(tr("\"%1\" has no downloaded data (any more).").arg(node->itemName()));
        return;
    }
    // The dialog has already asked before replacing an existing file; the copy replaces it in
    // one step, so a copy that fails leaves it as it was. A large picture takes longer to copy
    // than a frame lasts, so the copy runs beside the event loop; only a failure comes back.
    const QString source = node->filePath();
    const QPointer<GroupView> view(this);
    QThreadPool::globalInstance()->start([source, chosenPath, view] {
        QString error;
        if (FileManager::copyFile(source, chosenPath, &error))
            return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [view, error] {
                if (view)
                    view->showSaveError(error);
            },
            Qt::QueuedConnection);
    });
}

void GroupView::showSaveError(const QString &reason)
{
    auto *alert = new QMessageBox(QMessageBox::Warning, tr("Save a Copy"),
                                  tr("The copy could not be saved."), QMessageBox::Ok, window());
    alert->setInformativeText(reason);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    alert->open();
}

// --- Image windows ----------------------------------------------------------------------------

void GroupView::openImageWindowForNode(Node *node)
{
    if (!node->fileDownloaded())
        return;
    if (ImageController *existing = imageWindowForNode(node)) {
        existing->updateWithOpen(true);
        return;
    }
    std::unique_ptr<ImageController> controller =
        ImageController::create(node->filePath(), node->itemName(), node->dataSource(), node, this);
    if (controller)
        _imageWindows.push_back(std::move(controller));
}

ImageController *GroupView::imageWindowForNode(const Node *node) const
{
    for (const auto &controller : _imageWindows) {
        if (controller->node() == node)
            return controller.get();
    }
    return nullptr;
}

void GroupView::updateImageWindowForNode(Node *node)
{
    if (!node->fileDownloaded())
        return;
    if (ImageController *controller = imageWindowForNode(node))
        controller->updateWithOpen(false);
}

void GroupView::destroyAllImageWindows()
{
    _imageWindows.clear();
}

void GroupView::imageWindowDidExit(ImageController *controller)
{
    const auto it = std::find_if(_imageWindows.begin(), _imageWindows.end(),
                                 [controller](const auto &c) { return c.get() == controller; });
    if (it != _imageWindows.end())
        _imageWindows.erase(it);
}
