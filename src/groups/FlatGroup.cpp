#include "FlatGroup.h"

#include "nodes/Node.h"

FlatGroup::FlatGroup(QObject *parent)
    : NodeGroup(QStringLiteral("Alerts"), QStringLiteral("Queued..."), parent)
{
}

FlatGroup::~FlatGroup() = default;

bool FlatGroup::loadDictionaryData(const QString &dictionaryFileName,
                                   const QString &dataFolderPath)
{
    setDataFolderPath(dataFolderPath);
    const std::optional<QVariantMap> root = readDefinitionFile(dictionaryFileName);
    if (!root)
        return false;

    const int count = int(root->size());
    for (int i = 0; i < count; ++i) {
        const QString key = QStringLiteral("Node%1").arg(i);
        const QVariant entry = root->value(key);
        if (entry.typeId() != QMetaType::QVariantMap)
            continue;
        addNewNodeWithDict(entry.toMap(), key);
    }
    return true;
}

Node *FlatGroup::addNewNodeWithDict(const QVariantMap &dict, const QString &entryName)
{
    std::unique_ptr<Node> node = createNode(dict, entryName);
    if (!node)
        return nullptr;
    _nodes.push_back(std::move(node));
    return _nodes.back().get();
}

QList<Node *> FlatGroup::allNodes() const
{
    QList<Node *> result;
    result.reserve(qsizetype(_nodes.size()));
    for (const auto &node : _nodes)
        result.append(node.get());
    return result;
}

Node *FlatGroup::nodeAt(int index) const
{
    if (index < 0 || size_t(index) >= _nodes.size())
        return nullptr;
    return _nodes[size_t(index)].get();
}

int FlatGroup::indexOf(const Node *node) const
{
    for (size_t i = 0; i < _nodes.size(); ++i) {
        if (_nodes[i].get() == node)
            return int(i);
    }
    return -1;
}

Node *FlatGroup::selectNodeAtIndex(int index)
{
    if (_nodes.empty()) {
        setSelectedNode(nullptr);
        return nullptr;
    }
    if (index < 0 || size_t(index) >= _nodes.size())
        index = 0;
    _lastAlertMenuIndex = index;
    setSelectedNode(_nodes[size_t(index)].get());
    return selectedNode();
}

void FlatGroup::refreshDailyWeatherNode()
{
    if (Node *first = nodeAt(0))
        addNodeToDownloadQueue(first);
}

void FlatGroup::destroyAllNodes()
{
    if (_nodes.empty())
        return;
    endQueue();
    for (const auto &node : _nodes)
        node->cleanup();
    setSelectedNode(nullptr);
    _nodes.clear();
}
