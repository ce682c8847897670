#include "core/sources/NodeGroup.h"

#include "core/log/LogSink.h"
#include "core/settings/Preferences.h"
#include "core/sources/Node.h"
#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"

#include <QDebug>
#include <QFileInfo>
#include <QRegularExpression>

#include <limits>

NodeGroup::NodeGroup(const QString &groupName, int groupNumber, const QString &queuedLongStatus,
                     QObject *parent)
    : QObject(parent), _groupName(groupName), _groupNumber(groupNumber), _queue(queuedLongStatus)
{
}

NodeGroup::~NodeGroup()
{
    // The queue refers to the nodes; it goes first.
    _queue.end();
    _nodes.clear();
}

QList<Node *> NodeGroup::allNodes() const
{
    QList<Node *> result;
    result.reserve(qsizetype(_nodes.size()));
    for (const auto &node : _nodes)
        result.append(node.get());
    return result;
}

Node *NodeGroup::nodeAt(int index) const
{
    if (index < 0 || size_t(index) >= _nodes.size())
        return nullptr;
    return _nodes[size_t(index)].get();
}

int NodeGroup::indexOf(const Node *node) const
{
    for (size_t i = 0; i < _nodes.size(); ++i) {
        if (_nodes[i].get() == node)
            return int(i);
    }
    return -1;
}

void NodeGroup::storeNodes()
{
    _queue.end();
    for (const auto &node : _nodes)
        node->cleanup();
}

void NodeGroup::discardNodes()
{
    _selectedNode = nullptr;
    _nodes.clear();
}

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
    const QString bundled = ResourceLocator::resourcePath(fileName);
    const QString own = ResourceLocator::userDefinitionFilePath(fileName);
    if (!own.isEmpty() &&
        QFileInfo(own).absoluteFilePath() != QFileInfo(bundled).absoluteFilePath()) {
        QString problem;
        if (auto root = PropertyList::dictionaryFromFile(own, &problem))
            return root;
        // A mistake in the user's own list must not empty the view. It is the user's to mend, so
        // it goes to the activity log, once per file.
        const QString error =
            QStringLiteral("Cannot read the definition file \"%1\": %2. The bundled one is used "
                           "instead.")
                .arg(own, problem);
        if (_log)
            _log->addErrorToLog(error);
        else
            qWarning().noquote() << error;
    }
    QString problem;
    auto root = PropertyList::dictionaryFromFile(bundled, &problem);
    if (!root)
        qWarning().noquote() << "Failed to load rootDict!"
                             << QStringLiteral("(%1: %2)").arg(bundled, problem);
    return root;
}

Node *NodeGroup::createNode(const QVariantMap &dict, const QString &entryName)
{
    std::unique_ptr<Node> node = Node::create(dict, this, _dataFolderPath, false);
    if (!node) {
        reportUnusableEntry(entryName, Node::definitionProblem(dict));
        return nullptr;
    }
    _nodes.push_back(std::move(node));
    return _nodes.back().get();
}

void NodeGroup::readNumberedEntries(
    const QVariantMap &dict, const QString &prefix, int count, const QString &parent,
    const std::function<void(const QVariantMap &entry, const QString &entryName)> &use) const
{
    reportNumbering(dict, prefix, count, parent);
    for (int i = 0; i < count; ++i) {
        const QString key = prefix + QString::number(i);
        const auto entry = dict.constFind(key);
        if (entry == dict.cend())
            continue;
        if (entry->typeId() != QMetaType::QVariantMap)
            reportUnusableEntry(parent + key, QStringLiteral("not a dictionary"));
        else
            use(entry->toMap(), parent + key);
    }
}

void NodeGroup::reportUnusableEntry(const QString &entryName, const QString &reason) const
{
    qWarning().noquote()
        << "Cannot allocate resources for new Node!"
        << QStringLiteral("(group \"%1\", entry %2: %3)").arg(_groupName, entryName, reason);
}

void NodeGroup::reportNumbering(const QVariantMap &dict, const QString &prefix, int probed,
                                const QString &parent) const
{
    // Every key of the form prefix + digits, with its number (saturated: a number too large for
    // the probe is simply beyond it).
    const QRegularExpression numbered(QStringLiteral("^%1(\\d+)$").arg(prefix));
    QList<std::pair<QString, qint64>> entries;
    qint64 highest = -1;
    for (auto it = dict.cbegin(); it != dict.cend(); ++it) {
        const QRegularExpressionMatch match = numbered.match(it.key());
        if (!match.hasMatch())
            continue;
        bool ok = false;
        qint64 number = match.capturedView(1).toLongLong(&ok);
        if (!ok)
            number = std::numeric_limits<qint64>::max();
        entries.append({it.key(), number});
        highest = std::max(highest, number);
    }

    for (int i = 0; i < probed && i < highest; ++i) {
        const QString key = prefix + QString::number(i);
        if (!dict.contains(key))
            reportUnusableEntry(parent + key, QStringLiteral("missing, a gap in the numbering"));
    }

    const QString first = prefix + QLatin1Char('0');
    const QString reach = probed <= 0   ? QStringLiteral("no %1 entry is read here").arg(prefix)
                          : probed == 1 ? QStringLiteral("only %1 is read here").arg(first)
                                        : QStringLiteral("only %1 to %2 are read here")
                                              .arg(first, prefix + QString::number(probed - 1));
    for (const auto &[key, number] : entries) {
        // "Node01" is never looked up, whatever its number: only "Node1" is.
        if (number < probed && key == prefix + QString::number(number))
            continue;
        reportUnusableEntry(parent + key, QStringLiteral("never read, %1").arg(reach));
    }
}
