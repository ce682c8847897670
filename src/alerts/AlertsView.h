#pragma once

#include <QWidget>

class ActivityLog;
class FlatGroup;
class Node;
class NodeScheduler;
class QComboBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

// The Alerts view: a menu of the text bulletins and the selected one, reformatted for reading,
// with its status, its update times and the controls that reload, cancel and schedule it.
class AlertsView : public QWidget {
    Q_OBJECT

public:
    AlertsView(FlatGroup *group, ActivityLog *log, QWidget *parent = nullptr);
    ~AlertsView() override;

    static constexpr const char *kViewSizeKey = "AlertsViewSize";
    static constexpr const char *kMenuIndexKey = "lastAlertMenuIndex";

    // Restores the size and the remembered menu index.
    void awakeFromNib();
    void loadDictionaryData(const QString &dictionaryFileName, const QString &dataFolderPath);
    void createMenuItemsForNodes();
    void loadFrameSize();
    void saveFrameSize();
    void destroyAllNodes();
    void cleanup();
    void setNodeSchedulerWindow(NodeScheduler *sheet) { _nodeSchedulerWindow = sheet; }

    FlatGroup *group() const { return _group; }
    QComboBox *nodeListMenu() const { return _nodeListMenu; }

private:
    void buildInterface();

    FlatGroup *_group;
    ActivityLog *_log;
    QComboBox *_nodeListMenu = nullptr;
    QLabel *_nodeLastUpdateField = nullptr;
    QPlainTextEdit *_nodeDataTextView = nullptr;
    QLabel *_nodeStatusField = nullptr;
    QPushButton *_refreshButton = nullptr;
    QPushButton *_cancelNodeDownloadButton = nullptr;
    QPushButton *_scheduleNodeButton = nullptr;
    NodeScheduler *_nodeSchedulerWindow = nullptr;
};
