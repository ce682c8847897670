#pragma once

#include <QDialog>

class Node;
class QCheckBox;
class QComboBox;
class QLabel;

// The sheet in which the user edits one node's schedule: download at start-up, automatic
// updating and its rate. Every control acts on the node the moment it changes; there is nothing
// to confirm or undo. One sheet serves every view; it is pointed at a node before each showing.
class NodeScheduler : public QDialog {
    Q_OBJECT

public:
    explicit NodeScheduler(QWidget *parent = nullptr);

    void setMyNode(Node *node);
    Node *myNode() const { return _myNode; }

    // The control actions.
    void setDownloadsAtStartup(bool on);
    void setAutoUpdatesState(bool on);
    void setAutoUpdateTimer(int menuIndex);
    void close();

    QLabel *nodeTitleField() const { return _nodeTitleField; }
    QCheckBox *downloadAtStartupButton() const { return _downloadAtStartupButton; }
    QCheckBox *autoUpdatesButton() const { return _autoUpdatesButton; }
    QComboBox *autoUpdateTimeMenu() const { return _autoUpdateTimeMenu; }

    // The titles of the eight rates, in rate order.
    static QStringList rateTitles();

private:
    Node *_myNode = nullptr;
    QLabel *_nodeTitleField;
    QCheckBox *_downloadAtStartupButton;
    QCheckBox *_autoUpdatesButton;
    QComboBox *_autoUpdateTimeMenu;
};
