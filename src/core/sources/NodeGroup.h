#pragma once

#include "core/sources/DownloadQueue.h"
#include "core/sources/Node.h"
#include "core/sources/NodeDelegate.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class LogSink;

// What every data view does with its nodes, without any display: the nodes themselves (the group
// owns them, in file order), the reading of the definition file, the download queue, the commands
// that feed and empty it, and the handling of the nodes' events (queue progress and logging). The
// image groups and the Alerts group derive from it and differ in how their definition file is laid
// out and how they present their nodes; the views that show them listen to the signals below to
// redraw.
class NodeGroup : public QObject, public NodeDelegate {
    Q_OBJECT

public:
    NodeGroup(const QString &groupName, int groupNumber, const QString &queuedLongStatus,
              QObject *parent = nullptr);
    ~NodeGroup() override;

    QString groupName() const { return _groupName; }
    int groupNumber() const { return _groupNumber; }
    QString dataFolderPath() const { return _dataFolderPath; }
    void setDataFolderPath(const QString &path) { _dataFolderPath = path; }
    void setLog(LogSink *log) { _log = log; }
    LogSink *log() const { return _log; }

    // Reads the definition file (the user's, or the bundled one in its place: see
    // readDefinitionFile()) into nodes for the data folder. Returns false (after logging "Failed
    // to load rootDict!") when the bundled file cannot be read either; nothing is added then.
    virtual bool loadDefinitionFile(const QString &dictionaryFileName) = 0;

    // Ends the queue and lets every node store its state; the Alerts group then discards its
    // nodes, an image group keeps them until it goes.
    virtual void destroyAllNodes() = 0;

    // Every node of the group in group order (file order).
    QList<Node *> allNodes() const;
    int nodeCount() const { return int(_nodes.size()); }
    // None outside 0 to nodeCount() - 1.
    Node *nodeAt(int index) const;
    // -1 for a node of another group.
    int indexOf(const Node *node) const;

    // The selection the commands act on. Views set it as the user selects.
    Node *selectedNode() const { return _selectedNode; }
    void setSelectedNode(Node *node) { _selectedNode = node; }

    // Queue.
    void addNodeToDownloadQueue(Node *node);
    bool nodeIsInDownloadQueue(const Node *node) const;
    void removeNodeFromDownloadQueue(const Node *node);
    void checkDownloadQueue();
    const QList<Node *> &downloadQueue() const { return _queue.nodes(); }

    // Commands.
    void refreshAllNodeData();
    void refreshSelectedNodeData();
    void runScheduledUpdates();
    void runStartupDownloads();
    void cancelSelectedNodeDownload();
    void cancelAllDownloads();
    void emptyGroupCache();

    // For a node shown without its data file: whether the view should say it is downloading. A
    // node not yet queued is queued here when the preferences allow missing data to be fetched
    // and the application is online.
    bool queueMissingData(Node *node);

    // NodeDelegate.
    void nodeFileDidLoad(Node *node) override;
    void nodeDidFailWithError(Node *node, const QString &error) override;
    void nodeHasMessage(Node *node) override;
    void nodeDidChangeUpdateSettings(Node *node) override;

signals:
    void nodeStatusChanged(Node *node);
    void nodeSettingsChanged(Node *node);
    void nodeDataLoaded(Node *node);
    void nodeDownloadFailed(Node *node, const QString &error);
    // A node left the queue (finished, failed or cancelled). Cancelling changes the node's status
    // while it is still queued, so a view that shows whether a node is queued listens to this too.
    void nodeLeftDownloadQueue(const Node *node);
    // Every node's data file was deleted (Empty Cache); what depends on having data must follow.
    void groupCacheEmptied();

protected:
    // Reads a group definition file by name: the user's own (see ResourceLocator) when there is
    // one, else the bundled one. A user's file that cannot be read is one error in the log, and
    // the bundled file stands in for it; a bundled file that cannot be read logs "Failed to load
    // rootDict!" on the console, and there is nothing.
    std::optional<QVariantMap> readDefinitionFile(const QString &fileName);
    // Makes a node for a definition entry and keeps it; none, with the reason on the console,
    // when the entry cannot make one.
    Node *createNode(const QVariantMap &dict, const QString &entryName);
    // Probes the numbered entries prefix0, prefix1, ... up to count - 1 of a definition
    // dictionary, as the definition files are read, and hands each one that is a dictionary to
    // use() with its entry name (parent + key). What the probe cannot use is reported on the
    // console, never passed over in silence.
    void readNumberedEntries(
        const QVariantMap &dict, const QString &prefix, int count, const QString &parent,
        const std::function<void(const QVariantMap &entry, const QString &entryName)> &use) const;
    // Says on the console that a definition entry cannot be used, and why.
    void reportUnusableEntry(const QString &entryName, const QString &reason) const;
    // The numbered entries ("Node%d" or "Domain%d", by the prefix) of a definition dictionary
    // that the reading rule, which probes the indices 0 to probed - 1, cannot use: a missing
    // index with a higher numbered entry after it (a gap), and every numbered entry that the
    // probe never reaches. Each is reported on the console; the parent names the dictionary's
    // own entry ("Domain0/"), empty for the root.
    void reportNumbering(const QVariantMap &dict, const QString &prefix, int probed,
                         const QString &parent = {}) const;
    void cancelQueuedNode(Node *node);
    // Ends the queue for good and lets every node store its state (its last update).
    void storeNodes();
    // Forgets the selection and destroys every node.
    void discardNodes();

    QString _groupName;
    int _groupNumber = 0;

private:
    QString _dataFolderPath;
    std::vector<std::unique_ptr<Node>> _nodes;
    DownloadQueue _queue;
    Node *_selectedNode = nullptr;
    LogSink *_log = nullptr;
};
