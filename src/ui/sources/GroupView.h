#pragma once

#include "core/sources/DomainGroup.h"

#include "ui/sources/NodeDetailPane.h"

#include <QPixmap>
#include <QWidget>

#include <memory>

class ActivityLog;
class Domain;
class FailureLine;
class GroupOutlineModel;
class ImageController;
class ImagePane;
class ImageWindowRegistry;
class Node;
class NodeScheduler;
class ViewSizeKeeper;
class OutlineItem;
class QLabel;
class QModelIndex;
class QPushButton;
class QSplitter;
class QTextBrowser;
class QTreeView;

// One image group on screen (Sun, Graphs, Aurora or Earth): the outline of its domains and nodes
// beside the selected node's details (NodeDetailPane), and the nodes' floating image windows
// (ImageWindowRegistry). The view turns the outline's selection and the nodes' events into what
// the pane and the windows show, and the buttons' clicks into the group's commands.
class GroupView : public QWidget {
    Q_OBJECT

public:
    GroupView(DomainGroup *group, ActivityLog *log, QWidget *parent = nullptr);
    ~GroupView() override;

    // Called once the widgets exist: outline indentation and the double-click action.
    void awakeFromNib();
    void loadDomainDataForGroup(const QString &groupName, int groupNumber,
                                const QString &dictionaryFileName, const QString &dataFolderPath);
    void applicationDidFinishLaunching();
    void loadFrameSize();
    void saveFrameSize();
    void destroyAllNodes();
    void cleanup();
    void setNodeSchedulerWindow(NodeScheduler *sheet) { _nodeSchedulerWindow = sheet; }
    // The page shown while no node is selected (HTML).
    void setDefaultDescription(const QString &html) { _defaultDescription = html; }

    // Selection, as the outline reports it.
    bool outlineShouldSelectItem(OutlineItem *item);
    void outlineSelectionDidChange();
    void domainListDoubleClicked();
    bool hasSelectedNode() const;
    Node *selectedNode() const;
    Domain *selectedDomain() const;

    // Display.
    void updateInterfaceForSelection();
    // The times that move on by themselves: the selected node's data age and every stale mark.
    void refreshTimes();
    void displayImageForNode(Node *node);
    void displayDescriptionForNode(Node *node);
    void clearDescriptionField();
    QPixmap getScaledImageFromFileAtPath(const QString &path) const;
    void setLastNodeViewed(const QString &name);

    // Commands of the buttons.
    void refreshSelectedNodeData();
    void refreshSelectedDomainNodes();
    void cancelSelectedNodeDownload();
    void openScheduleWindowForNode();
    void schedulerDidEnd(int returnCode);
    void zoomSelectedNodeData();
    void revealSelectedNodeData();
    void saveNodeImage();
    void savePanelDidEnd(int returnCode, const QString &chosenPath);

    // Image windows.
    void openImageWindowForNode(Node *node);
    ImageController *imageWindowForNode(const Node *node) const;
    void updateImageWindowForNode(Node *node);
    void destroyAllImageWindows();
    void imageWindowDidExit(ImageController *controller);

    DomainGroup *group() const { return _group; }
    GroupOutlineModel *outlineModel() const { return _model; }
    QTreeView *domainsList() const { return _domainsList; }
    QSplitter *splitView() const { return _splitView; }
    NodeDetailPane *detailPane() const { return _detailPane; }
    ImagePane *imageView() const { return _detailPane->imageView(); }
    QTextBrowser *descriptionView() const { return _detailPane->descriptionView(); }
    QLabel *nodeTitleField() const { return _detailPane->nodeTitleField(); }
    QLabel *dataSourceField() const { return _detailPane->dataSourceField(); }
    QLabel *lastUpdatedField() const { return _detailPane->lastUpdatedField(); }
    // Why the selected node's last download failed, beside the last-update line.
    FailureLine *failureField() const { return _detailPane->failureField(); }
    QPushButton *cancelDownloadButton() const { return _detailPane->cancelDownloadButton(); }
    QPushButton *refreshImageButton() const { return _detailPane->refreshImageButton(); }
    QPushButton *zoomImageButton() const { return _detailPane->zoomImageButton(); }
    QPushButton *revealImageButton() const { return _detailPane->revealImageButton(); }
    QPushButton *scheduleNodeButton() const { return _detailPane->scheduleNodeButton(); }
    QPushButton *refreshDomainButton() const { return _refreshDomainButton; }

    QString groupName() const;
    int groupNumber() const;
    // The size and split-view keys of this group.
    QString viewSizeKey() const;
    QString splitViewRectsKey() const;
    QString lastNodeViewedKey() const;

    // The group's three placeholder pictures, rendered on first use.
    QPixmap splashImage() const;
    QPixmap noDataImage() const;
    QPixmap downloadingImage() const;
    QPixmap shownImage() const;

signals:
    // The data-source line was clicked; the address is its text.
    void dataSourceLinkClicked(const QString &address);
    // The selection or the selected node's state changed.
    void selectionChanged();

private:
    void buildInterface();
    void connectGroup();
    // What the picture area shows; each one makes a picture still being decoded stale.
    void showPlaceholder(const QString &name);
    void showSplash();
    void showNodeImage(Node *node, const QPixmap &image);
    void restoreExpansion();
    void userExpanded(const QModelIndex &index);
    void userCollapsed(const QModelIndex &index);
    void nodeStatusChanged(Node *node);
    void nodeSettingsChanged(Node *node);
    void nodeDataLoaded(Node *node);
    void nodeDownloadFailed(Node *node);
    void showSaveError(const QString &reason);

    DomainGroup *_group;
    GroupOutlineModel *_model;
    ActivityLog *_log;
    std::unique_ptr<ImageWindowRegistry> _imageWindows;
    QString _defaultDescription;

    DomainGroup::Placeholders _placeholders;

    QTreeView *_domainsList = nullptr;
    QSplitter *_splitView = nullptr;
    NodeDetailPane *_detailPane = nullptr;
    QPushButton *_refreshDomainButton = nullptr;
    NodeScheduler *_nodeSchedulerWindow = nullptr;
    ViewSizeKeeper *_sizeKeeper = nullptr;
    // The node whose picture is shown, if any, and the number of the latest request for a
    // picture: a large picture decoded in the background is shown only if no other came since.
    const Node *_imageNode = nullptr;
    quint64 _imageRequest = 0;
    // Restoring the expansion at start-up is not the user's choice and must not be remembered
    // as one; a double click that toggles a domain is, and is remembered.
    bool _restoringExpansion = false;
};
