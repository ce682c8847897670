#pragma once

#include "core/sources/NodeGroup.h"

#include <memory>
#include <vector>

class Domain;

// An image group (Sun, Graphs, Aurora, Earth): nodes held in named domains, read from a
// definition file with one dictionary per domain. The outline shows the domains as branches.
class DomainGroup : public NodeGroup {
    Q_OBJECT

public:
    explicit DomainGroup(QObject *parent = nullptr);
    ~DomainGroup() override;

    // Reads the definition file (the user's, or the bundled one in its place: see
    // readDefinitionFile()) into domains and nodes. Returns false (after logging "Failed to load
    // rootDict!") when the bundled file cannot be read either; the group then has no domains.
    bool loadDomainDataForGroup(const QString &groupName, int groupNumber,
                                const QString &dictionaryFileName, const QString &dataFolderPath);
    // The two halves of loading, for a view that restores its layout in between.
    void setGroup(const QString &groupName, int groupNumber, const QString &dataFolderPath);
    bool loadDefinitionFile(const QString &dictionaryFileName);
    Domain *createNewDomain(const QString &domainName);
    Node *addNodeToDomain(Domain *domain, const QVariantMap &dict, const QString &entryName = {});

    int groupNumber() const { return _groupNumber; }
    QList<Domain *> domains() const;
    QList<Node *> allNodes() const override;

    Domain *selectedDomain() const { return _selectedDomain; }
    void setSelectedDomain(Domain *domain) { _selectedDomain = domain; }
    void refreshSelectedDomainNodes();

    // Ends the queue and lets every node store its state. The nodes stay until the group goes.
    void destroyAllNodes();

    // The names of the three placeholder pictures for a group number: Sun and Graphs share the
    // solar set, Aurora and Earth have their own, any other number has none.
    struct Placeholders {
        QString splash;
        QString noData;
        QString downloading;
    };
    static Placeholders placeholdersForGroup(int groupNumber);

    // The remembered expansion of a domain: 1 expanded by the user, 2 collapsed, 0 never touched.
    static QString expandedKey(const QString &domainName);
    static int expansionState(const QString &domainName);
    static void setExpansionState(const QString &domainName, int state);

private:
    std::vector<std::unique_ptr<Domain>> _domains;
    int _groupNumber = 0;
    Domain *_selectedDomain = nullptr;
};
