#include "core/sources/FlatGroup.h"

#include "core/bulletins/BulletinFile.h"
#include "core/sources/Node.h"

FlatGroup::FlatGroup(QObject *parent)
    : NodeGroup(QStringLiteral("Alerts"), QStringLiteral("Queued..."), parent)
{
}

FlatGroup::~FlatGroup() = default;

bool FlatGroup::loadDictionaryData(const QString &dictionaryFileName, const QString &dataFolderPath)
{
    setDataFolderPath(dataFolderPath);
    const std::optional<QVariantMap> root = readDefinitionFile(dictionaryFileName);
    if (!root)
        return false;

    // Node0 up to one less than the number of root entries are probed; what the probe cannot
    // use is reported, never passed over in silence.
    const QString prefix = QStringLiteral("Node");
    const int count = int(root->size());
    reportNumbering(*root, prefix, count);
    for (int i = 0; i < count; ++i) {
        const QString key = prefix + QString::number(i);
        const auto entry = root->constFind(key);
        if (entry == root->cend())
            continue;
        if (entry->typeId() != QMetaType::QVariantMap)
            reportUnusableEntry(key, QStringLiteral("not a dictionary"));
        else
            addNewNodeWithDict(entry->toMap(), key);
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

QString FlatGroup::notLoadedText()
{
    return QStringLiteral("Data not loaded. Press \"Reload\" to download current data.");
}

QString FlatGroup::downloadingText()
{
    return QStringLiteral("Downloading data, please wait...");
}

QString FlatGroup::textForSelectedNode(Node *node)
{
    if (!node)
        return QString();
    if (node->fileDownloaded())
        return storedReportText(node).value_or(notLoadedText());
    return queueMissingData(node) ? downloadingText() : notLoadedText();
}

std::optional<QString> FlatGroup::storedReportText(const Node *node, const QString &dataFileName)
{
    if (!node->fileDownloaded())
        return std::nullopt;
    return BulletinFile::reportText(node->filePath(),
                                    dataFileName.isEmpty() ? node->fileName() : dataFileName);
}

Node *FlatGroup::nodeNamed(const QString &name) const
{
    const auto find = [this](auto matches) -> Node * {
        for (const auto &node : _nodes) {
            if (matches(node.get()))
                return node.get();
        }
        return nullptr;
    };
    if (Node *node = find([&](const Node *n) { return n->fileName() == name; }))
        return node;
    if (Node *node = find(
            [&](const Node *n) { return n->fileName().compare(name, Qt::CaseInsensitive) == 0; }))
        return node;
    return find([&](const Node *n) {
        return !n->nodeTitle().isEmpty() && n->nodeTitle().compare(name, Qt::CaseInsensitive) == 0;
    });
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
