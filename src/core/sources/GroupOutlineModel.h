#pragma once

#include <QAbstractItemModel>
#include <QHash>

class Domain;
class DomainGroup;
class Node;
class OutlineItem;

// The outline of an image group: its domains as top-level rows, each with its nodes beneath.
// Column 0 ("itemName") holds the item's name, column 1 ("nodeStatus") its short status, except
// that an item whose data is stale and that has nothing more pressing to say (it is neither
// downloading, waiting nor failed) shows the stale mark instead of the check mark; its tooltip
// says why (NodeTimes).
class GroupOutlineModel : public QAbstractItemModel {
    Q_OBJECT

public:
    explicit GroupOutlineModel(DomainGroup *group, QObject *parent = nullptr);

    static QString columnIdentifier(int column);
    // The outline's answer for an item in a column, by the column's identifier: the name for
    // "itemName", the short status for "nodeStatus", nothing for any other column.
    static QVariant objectValue(const OutlineItem *item, const QString &columnIdentifier);

    OutlineItem *itemForIndex(const QModelIndex &index) const;
    QModelIndex indexForDomain(const Domain *domain, int column = 0) const;
    QModelIndex indexForNode(const Node *node, int column = 0) const;

    // Rebuilds the rows from the group (after loading).
    void reloadData();
    // Redraws a node's row, e.g. after its status changed.
    void refreshNode(const Node *node);
    // Redraws every node's status, as time makes data stale.
    void refreshStatuses();

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;

private:
    DomainGroup *_group;
    QList<Domain *> _domains;
    // Where each node sits: its domain's row and its own row there.
    QHash<const Node *, QPair<int, int>> _nodeRows;
};
