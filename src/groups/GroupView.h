#pragma once

#include <QPixmap>
#include <QWidget>

class ActivityLog;
class Domain;
class DomainGroup;
class GroupOutlineModel;
class Node;
class NodeScheduler;
class QLabel;
class QPushButton;
class QSplitter;
class QTextBrowser;
class QTreeView;

// One image group on screen (Sun, Graphs, Aurora or Earth): the outline of its domains and nodes
// beside the selected node's picture, title, source, update times and description.
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

    DomainGroup *group() const { return _group; }
    GroupOutlineModel *outlineModel() const { return _model; }
    QTreeView *domainsList() const { return _domainsList; }
    QSplitter *splitView() const { return _splitView; }
    QLabel *imageView() const { return _imageView; }

    QString groupName() const;
    int groupNumber() const;
    // The size and split-view keys of this group.
    QString viewSizeKey() const;
    QString splitViewRectsKey() const;

    const QPixmap &splashImage() const { return _splashImage; }
    const QPixmap &noDataImage() const { return _noDataImage; }
    const QPixmap &downloadingImage() const { return _downloadingImage; }

protected:
    // Expansion done by the program itself (restoring it at start-up) is not the user's choice
    // and must not be remembered as one.
    bool _restoringExpansion = false;

private:
    void buildInterface();
    void loadPlaceholderImages(int groupNumber);
    void showImage(const QPixmap &image);
    void restoreExpansion();
    void userExpanded(const QModelIndex &index);
    void userCollapsed(const QModelIndex &index);

    DomainGroup *_group;
    GroupOutlineModel *_model;
    ActivityLog *_log;

    QPixmap _noDataImage;
    QPixmap _downloadingImage;
    QPixmap _splashImage;

    QTreeView *_domainsList = nullptr;
    QSplitter *_splitView = nullptr;
    QTextBrowser *_nodeDescriptionTextField = nullptr;
    QLabel *_imageView = nullptr;
    QLabel *_nodeTitleField = nullptr;
    QLabel *_dataSourceField = nullptr;
    QLabel *_lastUpdatedField = nullptr;
    QPushButton *_cancelDownloadButton = nullptr;
    QPushButton *_refreshImageButton = nullptr;
    QPushButton *_zoomImageButton = nullptr;
    QPushButton *_revealImageButton = nullptr;
    QPushButton *_scheduleNodeButton = nullptr;
    QPushButton *_refreshDomainButton = nullptr;
    NodeScheduler *_nodeSchedulerWindow = nullptr;
};
