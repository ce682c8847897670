#include "NodeGroup.h"

#include "PropertyList.h"
#include "app/Preferences.h"
#include "app/ResourceLocator.h"
#include "nodes/Node.h"
#include "support/LogSink.h"

#include <QDebug>

NodeGroup::NodeGroup(const QString &groupName, const QString &queuedLongStatus, QObject *parent)
    : QObject(parent), _groupName(groupName), _queue(queuedLongStatus)
{
}

NodeGroup::~NodeGroup() = default;

void NodeGroup::addNodeToDownloadQueue(Node *node)
{
    _queue.add(node);
}

bool NodeGroup::nodeIsInDownloadQueue(const Node *node) const
{
    return _queue.contains(node);
}

void NodeGroup::removeNodeFromDownloadQueue(const Node *node)
{
    if (!_queue.contains(node))
        return;
    _queue.remove(node);
    emit nodeLeftDownloadQueue(node);
}

void NodeGroup::checkDownloadQueue()
{
    _queue.check();
}

void NodeGroup::refreshAllNodeData()
{
    for (Node *node : allNodes())
        addNodeToDownloadQueue(node);
}

void NodeGroup::refreshSelectedNodeData()
{
    if (_selectedNode)
        addNodeToDownloadQueue(_selectedNode);
}

void NodeGroup::runScheduledUpdates()
{
    for (Node *node : allNodes()) {
        if (node->checkAutoUpdate())
            addNodeToDownloadQueue(node);
    }
}

void NodeGroup::runStartupDownloads()
{
    for (Node *node : allNodes()) {
        if (node->downloadsAtStartup())
            addNodeToDownloadQueue(node);
    }
}

void NodeGroup::cancelQueuedNode(Node *node)
{
    node->cancelDownloading();
    removeNodeFromDownloadQueue(node);
}

void NodeGroup::cancelSelectedNodeDownload()
{
    if (_selectedNode && nodeIsInDownloadQueue(_selectedNode))
        cancelQueuedNode(_selectedNode);
    checkDownloadQueue();
}

void NodeGroup::cancelAllDownloads()
{
    for (Node *node : allNodes()) {
        if (nodeIsInDownloadQueue(node))
            cancelQueuedNode(node);
    }
}

void NodeGroup::emptyGroupCache()
{
    for (Node *node : allNodes()) {
        if (nodeIsInDownloadQueue(node))
            cancelQueuedNode(node);
        node->removeDataFile();
    }
    emit groupCacheEmptied();
}

bool NodeGroup::queueMissingData(Node *node)
{
    if (nodeIsInDownloadQueue(node))
        return true;
    const Preferences &prefs = Preferences::shared();
    if (prefs.downloadMissingData() && prefs.isOnline()) {
        addNodeToDownloadQueue(node);
        return true;
    }
    return false;
}

void NodeGroup::nodeFileDidLoad(Node *node)
{
    removeNodeFromDownloadQueue(node);
    checkDownloadQueue();
    if (!Preferences::shared().logErrorsOnly() && _log)
        _log->addMessageToLog(
            QStringLiteral("Download of \"%1\" Successful").arg(node->itemName()));
    emit nodeDataLoaded(node);
}

void NodeGroup::nodeDidFailWithError(Node *node, const QString &error)
{
    removeNodeFromDownloadQueue(node);
    checkDownloadQueue();
    if (_log)
        _log->addErrorToLog(error);
    emit nodeDownloadFailed(node, error);
}

void NodeGroup::nodeHasMessage(Node *node)
{
    emit nodeStatusChanged(node);
}

void NodeGroup::nodeDidChangeUpdateSettings(Node *node)
{
    emit nodeSettingsChanged(node);
}

std::optional<QVariantMap> NodeGroup::readDefinitionFile(const QString &fileName)
{
    const QString path = ResourceLocator::definitionFilePath(fileName);
    auto root = PropertyList::dictionaryFromFile(path);
    if (!root)
        qWarning().noquote() << "Failed to load rootDict!" << QStringLiteral("(%1)").arg(path);
    return root;
}

std::unique_ptr<Node> NodeGroup::createNode(const QVariantMap &dict, const QString &entryName)
{
    std::unique_ptr<Node> node = Node::create(dict, this, _dataFolderPath, false);
    if (!node) {
        qWarning().noquote() << "Cannot allocate resources for new Node!"
                             << QStringLiteral("(group \"%1\", entry %2: %3)")
                                    .arg(_groupName, entryName, Node::definitionProblem(dict));
    }
    return node;
}
