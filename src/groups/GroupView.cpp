#include "GroupView.h"

#include "Domain.h"
#include "DomainGroup.h"
#include "GroupOutlineModel.h"
#include "SplitLayout.h"
#include "support/ActivityLog.h"
#include "support/GeometryText.h"
#include "support/NamedImage.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QSplitter>
#include <QTextBrowser>
#include <QTreeView>
#include <QVBoxLayout>

GroupView::GroupView(DomainGroup *group, ActivityLog *log, QWidget *parent)
    : QWidget(parent), _group(group), _model(new GroupOutlineModel(group, this)), _log(log)
{
    buildInterface();
}

GroupView::~GroupView() = default;

void GroupView::buildInterface()
{
    _domainsList = new QTreeView;
    _domainsList->setModel(_model);
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
    _dataSourceField = new QLabel;
    _dataSourceField->setTextInteractionFlags(Qt::TextSelectableByMouse);
    _lastUpdatedField = new QLabel;
    _lastUpdatedField->setWordWrap(true);

    _imageView = new QLabel;
    _imageView->setAlignment(Qt::AlignCenter);
    _imageView->setMinimumSize(64, 64);
    auto *imageScroller = new QScrollArea;
    imageScroller->setWidget(_imageView);
    imageScroller->setWidgetResizable(true);
    imageScroller->setAlignment(Qt::AlignCenter);
    imageScroller->setFrameShape(QFrame::NoFrame);

    _nodeDescriptionTextField = new QTextBrowser;
    _nodeDescriptionTextField->setOpenExternalLinks(true);

    auto *detailSplit = new QSplitter(Qt::Vertical);
    detailSplit->addWidget(imageScroller);
    detailSplit->addWidget(_nodeDescriptionTextField);
    detailSplit->setStretchFactor(0, 3);
    detailSplit->setStretchFactor(1, 1);
    detailSplit->setChildrenCollapsible(false);

    _refreshImageButton = new QPushButton(tr("Reload"));
    _cancelDownloadButton = new QPushButton(tr("Cancel"));
    _scheduleNodeButton = new QPushButton(tr("Schedule…"));
    _zoomImageButton = new QPushButton(tr("Zoom"));
    _revealImageButton = new QPushButton(tr("Show File"));
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
    detailLayout->addWidget(_lastUpdatedField);
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
}

void GroupView::awakeFromNib()
{
    // Nine points per level, in this screen's pixels.
    _domainsList->setIndentation(qRound(9.0 * logicalDpiX() / 72.0));
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

void GroupView::loadDomainDataForGroup(const QString &groupName, int groupNumber,
                                       const QString &dictionaryFileName,
                                       const QString &dataFolderPath)
{
    // The layout keys carry the group's name, so the name comes first; the layout is restored
    // before the file is read, so that a missing file still leaves it restored.
    _group->setGroup(groupName, groupNumber, dataFolderPath);
    loadFrameSize();
    loadPlaceholderImages(groupNumber);
    showImage(_splashImage);
    if (!_group->loadDefinitionFile(dictionaryFileName))
        return;
    _model->reloadData();
    restoreExpansion();
}

void GroupView::loadPlaceholderImages(int groupNumber)
{
    const DomainGroup::Placeholders names = DomainGroup::placeholdersForGroup(groupNumber);
    const qreal dpr = devicePixelRatioF();
    _splashImage = NamedImage::pixmap(names.splash, dpr);
    _noDataImage = NamedImage::pixmap(names.noData, dpr);
    _downloadingImage = NamedImage::pixmap(names.downloading, dpr);
}

void GroupView::showImage(const QPixmap &image)
{
    if (image.isNull())
        _imageView->clear();
    else
        _imageView->setPixmap(image);
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
    showImage(_splashImage);
    _nodeTitleField->setText(tr("Please select an item from the list."));
}

void GroupView::loadFrameSize()
{
    QSettings settings;
    const QString size = settings.value(viewSizeKey()).toString();
    if (!size.isEmpty())
        resize(GeometryText::toSize(size).expandedTo(QSize(0, 0)));

    if (!_splitView)
        return;
    const QStringList stored = settings.value(splitViewRectsKey()).toStringList();
    QList<QRect> current;
    for (int i = 0; i < _splitView->count(); ++i)
        current.append(_splitView->widget(i)->geometry());
    const bool sideBySide = _splitView->orientation() == Qt::Horizontal;
    const QList<QRect> restored = SplitLayout::restoredRects(stored, current, sideBySide);

    QList<int> sizes;
    for (const QRect &rect : restored)
        sizes.append(std::max(0, sideBySide ? rect.width() : rect.height()));
    if (!stored.isEmpty())
        _splitView->setSizes(sizes);
}

void GroupView::saveFrameSize()
{
    QSettings settings;
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
}
