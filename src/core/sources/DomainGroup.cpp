#include "core/sources/DomainGroup.h"

#include "core/settings/Settings.h"
#include "core/sources/Domain.h"
#include "core/sources/Node.h"

#include <QSettings>

DomainGroup::DomainGroup(QObject *parent) : NodeGroup(QString(), QStringLiteral("-"), parent) {}

DomainGroup::~DomainGroup()
{
    // Nodes go before the domains' names and lists, with any transfer they still run.
    _domains.clear();
}

bool DomainGroup::loadDomainDataForGroup(const QString &groupName, int groupNumber,
                                         const QString &dictionaryFileName,
                                         const QString &dataFolderPath)
{
    setGroup(groupName, groupNumber, dataFolderPath);
    return loadDefinitionFile(dictionaryFileName);
}

void DomainGroup::setGroup(const QString &groupName, int groupNumber, const QString &dataFolderPath)
{
    _groupName = groupName;
    _groupNumber = groupNumber;
    setDataFolderPath(dataFolderPath);
}

bool DomainGroup::loadDefinitionFile(const QString &dictionaryFileName)
{
    const std::optional<QVariantMap> root = readDefinitionFile(dictionaryFileName);
    if (!root)
        return false;

    // Indices are probed, not enumerated: Domain0 up to one less than the number of root
    // entries, and within a domain Node0 up to two less than its entries ("DomainName" counts).
    // What the probe cannot use is reported, never passed over in silence.
    const QString domainPrefix = QStringLiteral("Domain");
    const QString nodePrefix = QStringLiteral("Node");
    const int domainCount = int(root->size());
    reportNumbering(*root, domainPrefix, domainCount);
    for (int i = 0; i < domainCount; ++i) {
        const QString domainKey = domainPrefix + QString::number(i);
        const auto entry = root->constFind(domainKey);
        if (entry == root->cend())
            continue;
        if (entry->typeId() != QMetaType::QVariantMap) {
            reportUnusableEntry(domainKey, QStringLiteral("not a dictionary"));
            continue;
        }
        const QVariantMap domainDict = entry->toMap();
        Domain *domain = createNewDomain(domainDict.value(QStringLiteral("DomainName")).toString());
        const int nodeCount = int(domainDict.size()) - 1;
        const QString parent = domainKey + QLatin1Char('/');
        reportNumbering(domainDict, nodePrefix, nodeCount, parent);
        for (int j = 0; j < nodeCount; ++j) {
            const QString nodeKey = nodePrefix + QString::number(j);
            const auto nodeEntry = domainDict.constFind(nodeKey);
            if (nodeEntry == domainDict.cend())
                continue;
            if (nodeEntry->typeId() != QMetaType::QVariantMap)
                reportUnusableEntry(parent + nodeKey, QStringLiteral("not a dictionary"));
            else
                addNodeToDomain(domain, nodeEntry->toMap(), parent + nodeKey);
        }
    }
    return true;
}

Domain *DomainGroup::createNewDomain(const QString &domainName)
{
    auto domain = std::make_unique<Domain>();
    domain->setDomainName(domainName);
    _domains.push_back(std::move(domain));
    return _domains.back().get();
}

Node *DomainGroup::addNodeToDomain(Domain *domain, const QVariantMap &dict,
                                   const QString &entryName)
{
    std::unique_ptr<Node> node = createNode(dict, entryName);
    if (!node)
        return nullptr;
    return domain->addNode(std::move(node));
}

QList<Domain *> DomainGroup::domains() const
{
    QList<Domain *> result;
    result.reserve(qsizetype(_domains.size()));
    for (const auto &domain : _domains)
        result.append(domain.get());
    return result;
}

QList<Node *> DomainGroup::allNodes() const
{
    QList<Node *> result;
    for (const auto &domain : _domains)
        result.append(domain->nodes());
    return result;
}

void DomainGroup::refreshSelectedDomainNodes()
{
    if (!_selectedDomain)
        return;
    for (Node *node : _selectedDomain->nodes())
        addNodeToDownloadQueue(node);
}

void DomainGroup::destroyAllNodes()
{
    if (_domains.empty())
        return;
    endQueue();
    for (Node *node : allNodes())
        node->cleanup();
}

QString DomainGroup::expandedKey(const QString &domainName)
{
    return domainName + QStringLiteral(" Expanded");
}

int DomainGroup::expansionState(const QString &domainName)
{
    return Settings::store().value(expandedKey(domainName)).toInt();
}

void DomainGroup::setExpansionState(const QString &domainName, int state)
{
    Settings::store().setValue(expandedKey(domainName), state);
}

DomainGroup::Placeholders DomainGroup::placeholdersForGroup(int groupNumber)
{
    // The number is taken as unsigned, so negative numbers fall into "any other".
    switch (unsigned(groupNumber)) {
    case 0:
    case 1:
        return {QStringLiteral("SplashSolar"), QStringLiteral("DataNotLoadedSolar"),
                QStringLiteral("DownloadingDataSolar")};
    case 2:
        return {QStringLiteral("SplashAurora"), QStringLiteral("DataNotLoadedAurora"),
                QStringLiteral("DownloadingDataAurora")};
    case 3:
        return {QStringLiteral("SplashEarth"), QStringLiteral("DataNotLoadedEarth"),
                QStringLiteral("DownloadingDataEarth")};
    default:
        return {};
    }
}
