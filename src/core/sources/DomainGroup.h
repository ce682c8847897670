#pragma once

#include "core/sources/GroupCatalogue.h"
#include "core/sources/NodeGroup.h"

#include <memory>
#include <vector>

class Domain;

// An image group (see GroupCatalogue): nodes held in named domains, read from a
// definition file with one dictionary per domain. The outline shows the domains as branches.
class DomainGroup : public NodeGroup {
    Q_OBJECT

public:
    explicit DomainGroup(const QString &groupName = {}, int groupNumber = 0,
                         QObject *parent = nullptr);
    ~DomainGroup() override;

    // Reads the definition file (the user's, or the bundled one in its place: see
    // readDefinitionFile()) into domains and nodes. Returns false (after logging "Failed to load
    // rootDict!") when the bundled file cannot be read either; the group then has no domains.
    bool loadDomainDataForGroup(const QString &groupName, int groupNumber,
                                const QString &dictionaryFileName, const QString &dataFolderPath);
    // The two halves of loading, for a view that restores its layout in between.
    void setGroup(const QString &groupName, int groupNumber, const QString &dataFolderPath);
    bool loadDefinitionFile(const QString &dictionaryFileName) override;
    Domain *createNewDomain(const QString &domainName);
    Node *addNodeToDomain(Domain *domain, const QVariantMap &dict, const QString &entryName = {});

    QList<Domain *> domains() const;

    Domain *selectedDomain() const { return _selectedDomain; }
    void setSelectedDomain(Domain *domain) { _selectedDomain = domain; }
    void refreshSelectedDomainNodes();

    // Ends the queue and lets every node store its state. The nodes stay until the group goes.
    void destroyAllNodes() override;

    // The names of the three placeholder pictures for a group number (see GroupCatalogue); a
    // number without an image group has none.
    using Placeholders = GroupCatalogue::Placeholders;
    static Placeholders placeholdersForGroup(int groupNumber);

    // The remembered expansion of a domain: 1 expanded by the user, 2 collapsed, 0 never touched.
    static QString expandedKey(const QString &domainName);
    static int expansionState(const QString &domainName);
    static void setExpansionState(const QString &domainName, int state);

private:
    std::vector<std::unique_ptr<Domain>> _domains;
    Domain *_selectedDomain = nullptr;
};
