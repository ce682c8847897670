#include "ui/sources/GroupView.h"

#include "core/settings/Settings.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/sources/OutlineSelectionModel.h"
#include "core/util/DescriptionText.h"
#include "ui/common/FileManager.h"
#include "ui/common/NamedImage.h"
#include "ui/common/TimeTicker.h"
#include "ui/common/ViewSizeKeeper.h"
#include "ui/log/ActivityLog.h"
#include "ui/sources/ImagePane.h"
#include "ui/sources/ImageWindowRegistry.h"
#include "ui/sources/NodeScheduler.h"
#include "ui/sources/ScaledImage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QThreadPool>
#include <QTreeView>
#include <QVBoxLayout>

GroupView::GroupView(DomainGroup *group, ActivityLog *log, QWidget *parent)
    : QWidget(parent), _group(group), _model(new GroupOutlineModel(group, this)), _log(log),
      _imageWindows(std::make_unique<ImageWindowRegistry>(this))
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

    _detailPane = new NodeDetailPane;

    _splitView = new QSplitter(Qt::Horizontal);
    _splitView->addWidget(outlinePane);
    _splitView->addWidget(_detailPane);
    // Only the detail pane can be collapsed: the outline is how everything else is reached.
    _splitView->setCollapsible(0, false);
    _splitView->setCollapsible(1, true);
    _splitView->setStretchFactor(0, 0);
    _splitView->setStretchFactor(1, 1);
    _splitView->setSizes({260, 640});
    _sizeKeeper = new ViewSizeKeeper(this, _splitView);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(_splitView);

    connect(_domainsList, &QTreeView::expanded, this, &GroupView::userExpanded);
    connect(_domainsList, &QTreeView::collapsed, this, &GroupView::userCollapsed);
    connect(_domainsList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &GroupView::outlineSelectionDidChange);

    connect(_detailPane, &NodeDetailPane::dataSourceLinkClicked, this,
            &GroupView::dataSourceLinkClicked);
    connect(refreshImageButton(), &QPushButton::clicked, this, &GroupView::refreshSelectedNodeData);
    connect(_refreshDomainButton, &QPushButton::clicked, this,
            &GroupView::refreshSelectedDomainNodes);
    connect(cancelDownloadButton(), &QPushButton::clicked, this,
            &GroupView::cancelSelectedNodeDownload);
    connect(scheduleNodeButton(), &QPushButton::clicked, this,
            &GroupView::openScheduleWindowForNode);
    connect(zoomImageButton(), &QPushButton::clicked, this, &GroupView::zoomSelectedNodeData);
    connect(revealImageButton(), &QPushButton::clicked, this, &GroupView::revealSelectedNodeData);
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
    connect(TimeTicker::shared(), &TimeTicker::ticked, this, &GroupView::refreshTimes);
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
    return imageView()->pixmap();
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
    _sizeKeeper->restore(viewSizeKey(), splitViewRectsKey());
}

void GroupView::saveFrameSize()
{
    _sizeKeeper->store(viewSizeKey(), splitViewRectsKey());
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

void GroupView::showPlaceholder(const QString &name)
{
    ++_imageRequest;
    _imageNode = nullptr;
    _detailPane->showPlaceholder(name);
}

void GroupView::showSplash()
{
    showPlaceholder(_placeholders.splash);
}

void GroupView::updateInterfaceForSelection()
{
    Node *node = _group->selectedNode();
    _detailPane->showNode(node, node && _group->nodeIsInDownloadQueue(node));
    _refreshDomainButton->setEnabled(!node && _group->selectedDomain());
    emit selectionChanged();
}

void GroupView::refreshTimes()
{
    _model->refreshStatuses();
    _detailPane->showTimes(_group->selectedNode());
}

void GroupView::displayImageForNode(Node *node)
{
    if (node->fileDownloaded()) {
        const QString path = node->filePath();
        if (!ScaledImage::isLarge(path)) {
            showNodeImage(node, getScaledImageFromFileAtPath(path));
            return;
        }
        // A large picture takes longer to decode than a frame lasts: it is decoded beside the
        // event loop. Meanwhile the node's previous picture stays, and a node just selected
        // shows none; a newer request makes this one stale.
        const quint64 request = ++_imageRequest;
        if (_imageNode != node) {
            _imageNode = nullptr;
            _detailPane->showImage(QPixmap());
        }
        ScaledImage::fromFileInBackground(
            path, devicePixelRatioF(), this, [this, node, request](const QPixmap &image) {
                if (request == _imageRequest && node == _group->selectedNode())
                    showNodeImage(node, image);
            });
    } else {
        // Queued already, or queued now when missing data is fetched: either way it is coming,
        // unless its download failed at once (an address that cannot be fetched) and it has left
        // the queue again.
        const bool coming = _group->queueMissingData(node) && _group->nodeIsInDownloadQueue(node);
        showPlaceholder(coming ? _placeholders.downloading : _placeholders.noData);
    }
    updateInterfaceForSelection();
}

void GroupView::showNodeImage(Node *node, const QPixmap &image)
{
    if (image.isNull()) {
        showPlaceholder(_placeholders.noData);
    } else {
        ++_imageRequest;
        _imageNode = node;
        _detailPane->showImage(image);
        updateImageWindowForNode(node);
    }
    updateInterfaceForSelection();
}

QPixmap GroupView::getScaledImageFromFileAtPath(const QString &path) const
{
    return ScaledImage::fromFile(path, devicePixelRatioF());
}

void GroupView::displayDescriptionForNode(Node *node)
{
    if (!node || !DescriptionText::isShowable(node->itemDescription())) {
        clearDescriptionField();
        return;
    }
    _detailPane->showDescription(node->itemDescription());
}

void GroupView::clearDescriptionField()
{
    _detailPane->showDescription(_defaultDescription);
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
    _imageWindows->openImageWindowForNode(node);
}

ImageController *GroupView::imageWindowForNode(const Node *node) const
{
    return _imageWindows->imageWindowForNode(node);
}

void GroupView::updateImageWindowForNode(Node *node)
{
    _imageWindows->updateImageWindowForNode(node);
}

void GroupView::destroyAllImageWindows()
{
    _imageWindows->destroyAllImageWindows();
}

void GroupView::imageWindowDidExit(ImageController *controller)
{
    _imageWindows->imageWindowDidExit(controller);
}
