#include "core/sources/FlatGroup.h"

#include "core/bulletins/BulletinFile.h"
#include "core/sources/GroupCatalogue.h"
#include "core/sources/Node.h"

FlatGroup::FlatGroup(QObject *parent)
    : FlatGroup(GroupCatalogue::group(GroupCatalogue::Alerts)->name, GroupCatalogue::Alerts, parent)
{
}

FlatGroup::FlatGroup(const QString &groupName, int groupNumber, QObject *parent)
    : NodeGroup(groupName, groupNumber, QStringLiteral("Queued..."), parent)
{
}

FlatGroup::~FlatGroup() = default;

bool FlatGroup::loadDictionaryData(const QString &dictionaryFileName, const QString &dataFolderPath)
{
    setDataFolderPath(dataFolderPath);
    return loadDefinitionFile(dictionaryFileName);
}

bool FlatGroup::loadDefinitionFile(const QString &dictionaryFileName)
{
    const std::optional<QVariantMap> root = readDefinitionFile(dictionaryFileName);
    if (!root)
        return false;
    // Node0 up to one less than the number of root entries are probed.
    readNumberedEntries(*root, QStringLiteral("Node"), int(root->size()), QString(),
                        [this](const QVariantMap &dict, const QString &entryName) {
                            addNewNodeWithDict(dict, entryName);
                        });
    return true;
}

Node *FlatGroup::addNewNodeWithDict(const QVariantMap &dict, const QString &entryName)
{
    return createNode(dict, entryName);
}

Node *FlatGroup::selectNodeAtIndex(int index)
{
    if (nodeCount() == 0) {
        setSelectedNode(nullptr);
        return nullptr;
    }
    if (index < 0 || index >= nodeCount())
        index = 0;
    _lastAlertMenuIndex = index;
    setSelectedNode(nodeAt(index));
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
    const QList<Node *> nodes = allNodes();
    const auto find = [&nodes](auto matches) -> Node * {
        const auto it = std::find_if(nodes.cbegin(), nodes.cend(), matches);
        return it == nodes.cend() ? nullptr : *it;
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
    if (nodeCount() == 0)
        return;
    storeNodes();
    discardNodes();
}
