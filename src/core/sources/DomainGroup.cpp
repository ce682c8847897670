#include "core/sources/DomainGroup.h"

#include "core/settings/Settings.h"
#include "core/sources/Domain.h"
#include "core/sources/Node.h"

#include <QSettings>

DomainGroup::DomainGroup(const QString &groupName, int groupNumber, QObject *parent)
    : NodeGroup(groupName, groupNumber, QStringLiteral("-"), parent)
{
}

DomainGroup::~DomainGroup() = default;

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
    readNumberedEntries(
        *root, QStringLiteral("Domain"), int(root->size()), QString(),
        [this](const QVariantMap &domainDict, const QString &domainKey) {
            Domain *domain =
                createNewDomain(domainDict.value(QStringLiteral("DomainName")).toString());
            readNumberedEntries(
                domainDict, QStringLiteral("Node"), int(domainDict.size()) - 1,
                domainKey + QLatin1Char('/'),
                [this, domain](const QVariantMap &nodeDict, const QString &nodeKey) {
                    addNodeToDomain(domain, nodeDict, nodeKey);
                });
        });
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
    Node *node = createNode(dict, entryName);
    if (node)
        domain->addNode(node);
    return node;
}

QList<Domain *> DomainGroup::domains() const
{
    QList<Domain *> result;
    result.reserve(qsizetype(_domains.size()));
    for (const auto &domain : _domains)
        result.append(domain.get());
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
    storeNodes();
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
    const GroupCatalogue::Group *group = GroupCatalogue::group(groupNumber);
    return group ? group->placeholders : Placeholders();
}
