#pragma once

#include <QWidget>

class ActivityLog;
class DataAgeLine;
class FailureLine;
class FlatGroup;
class Node;
class NodeScheduler;
class QComboBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class ViewSizeKeeper;

// The Alerts view: a menu of the text bulletins and the selected one, reformatted for reading,
// with its status, its update times and the controls that reload, cancel and schedule it.
// The nodes, their queue and the choice of what the report area says live in the group; the
// view shows them and turns the user's clicks into the group's commands.
class AlertsView : public QWidget {
    Q_OBJECT

public:
    AlertsView(FlatGroup *group, ActivityLog *log, QWidget *parent = nullptr);
    ~AlertsView() override;

    static constexpr const char *kViewSizeKey = "AlertsViewSize";
    static constexpr const char *kMenuIndexKey = "lastAlertMenuIndex";
    // What the report area says when the selected report has no data and its download failed.
    static QString failedText();

    // Restores the size and the remembered menu index.
    void awakeFromNib();
    // Reads the group's nodes, fills the menu and shows the remembered report.
    void loadDictionaryData(const QString &dictionaryFileName, const QString &dataFolderPath);
    void createMenuItemsForNodes();
    void loadFrameSize();
    void saveFrameSize();
    void destroyAllNodes();
    // At termination: the nodes store their state and go, then the layout is stored.
    void cleanup();
    void setNodeSchedulerWindow(NodeScheduler *sheet) { _nodeSchedulerWindow = sheet; }

    // Display.
    void selectNodeFromList();
    void setTextForSelectedNode(Node *node);
    void setTextViewText(const QString &text);
    void clearTextViewText();
    void updateInterfaceForSelection();
    // The selected report's times, which move on by themselves.
    void refreshTimes();

    // The view's own commands; the group-wide ones reach the group from the application.
    void refreshSelectedNodeData();
    void refreshDailyWeatherNode();
    void cancelSelectedNodeDownload();
    void openScheduleWindowForNode();
    void revealSelectedNodeData();
    void schedulerDidEnd(int returnCode);

    FlatGroup *group() const { return _group; }
    Node *selectedNode() const;
    QComboBox *nodeListMenu() const { return _nodeListMenu; }
    QPlainTextEdit *nodeDataTextView() const { return _nodeDataTextView; }
    QLabel *nodeStatusField() const { return _nodeStatusField; }
    QLabel *nodeLastUpdateField() const { return _nodeLastUpdateField; }
    DataAgeLine *dataAgeField() const { return _dataAgeField; }
    FailureLine *failureField() const { return _failureField; }
    QPushButton *refreshButton() const { return _refreshButton; }
    QPushButton *dailyReportButton() const { return _dailyReportButton; }
    QPushButton *cancelNodeDownloadButton() const { return _cancelNodeDownloadButton; }
    QPushButton *scheduleNodeButton() const { return _scheduleNodeButton; }

signals:
    // The selection or the selected node's state changed.
    void selectionChanged();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void buildInterface();
    void connectGroup();
    void nodeStatusChanged(Node *node);
    void nodeDataLoaded(Node *node);
    void nodeDownloadFailed(Node *node);

    FlatGroup *_group;
    ActivityLog *_log;
    QComboBox *_nodeListMenu = nullptr;
    QLabel *_nodeLastUpdateField = nullptr;
    DataAgeLine *_dataAgeField = nullptr;
    QPlainTextEdit *_nodeDataTextView = nullptr;
    QLabel *_nodeStatusField = nullptr;
    FailureLine *_failureField = nullptr;
    QPushButton *_refreshButton = nullptr;
    QPushButton *_dailyReportButton = nullptr;
    QPushButton *_cancelNodeDownloadButton = nullptr;
    QPushButton *_scheduleNodeButton = nullptr;
    NodeScheduler *_nodeSchedulerWindow = nullptr;
    QMetaObject::Connection _sheetEnd;
    ViewSizeKeeper *_sizeKeeper;
    // The text given while the view was not on screen (see setTextViewText()).
    QString _pendingText;
    bool _textPending = false;
};
