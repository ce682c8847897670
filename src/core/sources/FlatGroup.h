#pragma once

#include "core/sources/NodeGroup.h"

#include <optional>

// The Alerts group: one flat list of text-bulletin nodes, read from a definition file whose root
// holds Node0, Node1 and so on.
class FlatGroup : public NodeGroup {
    Q_OBJECT

public:
    // The Alerts group, unless another row of the catalogue is given.
    explicit FlatGroup(QObject *parent = nullptr);
    FlatGroup(const QString &groupName, int groupNumber, QObject *parent = nullptr);
    ~FlatGroup() override;

    // Reads the definition file into nodes for the data folder (see loadDefinitionFile()).
    bool loadDictionaryData(const QString &dictionaryFileName, const QString &dataFolderPath);
    bool loadDefinitionFile(const QString &dictionaryFileName) override;
    Node *addNewNodeWithDict(const QVariantMap &dict, const QString &entryName = {});

    QList<Node *> nodes() const { return allNodes(); }

    // The remembered menu index. An index outside the list selects the first node.
    int lastAlertMenuIndex() const { return _lastAlertMenuIndex; }
    void setLastAlertMenuIndex(int index) { _lastAlertMenuIndex = index; }
    // Selects the node at the index (the first one when the index is out of range, none when the
    // list is empty) and remembers the index actually selected.
    Node *selectNodeAtIndex(int index);

    // What the report area says when there is no report to show: the node has no data file (or
    // an empty one), or its download is on the way.
    static QString notLoadedText();
    static QString downloadingText();

    // The text that the Alerts view shows for the node: its reformatted report when its data
    // file can be read, otherwise why there is none. A node without data that is not queued yet
    // is queued here when the preferences allow missing data to be fetched and the application is
    // online.
    QString textForSelectedNode(Node *node);
    // The node's stored report as the Alerts view shows it, reformatted as its own data file
    // name (or the one given) selects. None when it has no data file that reads as text.
    static std::optional<QString> storedReportText(const Node *node,
                                                   const QString &dataFileName = {});

    // The node that a user names on the command line: by its data file name, exactly and then
    // ignoring case, then by its title ignoring case. None when nothing matches.
    Node *nodeNamed(const QString &name) const;

    // Queues the first node of the list, whatever is selected.
    void refreshDailyWeatherNode();
    // Ends the queue, lets every node store its state, then discards the nodes.
    void destroyAllNodes() override;

private:
    int _lastAlertMenuIndex = 0;
};
