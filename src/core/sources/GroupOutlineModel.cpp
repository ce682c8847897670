#include "core/sources/GroupOutlineModel.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/Node.h"
#include "core/sources/NodeTimes.h"
#include "core/util/Clock.h"

GroupOutlineModel::GroupOutlineModel(DomainGroup *group, QObject *parent)
    : QAbstractItemModel(parent), _group(group)
{
    reloadData();
}

QString GroupOutlineModel::columnIdentifier(int column)
{
    switch (column) {
    case 0:
        return QStringLiteral("itemName");
    case 1:
        return QStringLiteral("nodeStatus");
    default:
        return QString();
    }
}

QVariant GroupOutlineModel::objectValue(const OutlineItem *item, const QString &columnIdentifier)
{
    if (!item)
        return QVariant();
    if (columnIdentifier == QLatin1String("itemName"))
        return item->itemName();
    if (columnIdentifier == QLatin1String("nodeStatus"))
        return item->itemStatus();
    return QVariant();
}

void GroupOutlineModel::reloadData()
{
    beginResetModel();
    _domains = _group ? _group->domains() : QList<Domain *>();
    _nodeRows.clear();
    for (int d = 0; d < _domains.size(); ++d) {
        const QList<Node *> nodes = _domains[d]->nodes();
        for (int n = 0; n < nodes.size(); ++n)
            _nodeRows.insert(nodes[n], {d, n});
    }
    endResetModel();
}

void GroupOutlineModel::refreshNode(const Node *node)
{
    const QModelIndex first = indexForNode(node, 0);
    if (first.isValid())
        emit dataChanged(first, indexForNode(node, 1));
}

void GroupOutlineModel::refreshStatuses()
{
    for (int d = 0; d < _domains.size(); ++d) {
        const int count = _domains[d]->childrenCount();
        if (count == 0)
            continue;
        const QModelIndex domain = index(d, 0);
        emit dataChanged(index(0, 1, domain), index(count - 1, 1, domain),
                         {Qt::DisplayRole, Qt::ToolTipRole});
    }
}

OutlineItem *GroupOutlineModel::itemForIndex(const QModelIndex &index) const
{
    if (!index.isValid())
        return nullptr;
    return static_cast<OutlineItem *>(index.internalPointer());
}

QModelIndex GroupOutlineModel::indexForDomain(const Domain *domain, int column) const
{
    const int row = int(_domains.indexOf(const_cast<Domain *>(domain)));
    return row < 0 ? QModelIndex() : createIndex(row, column, const_cast<Domain *>(domain));
}

QModelIndex GroupOutlineModel::indexForNode(const Node *node, int column) const
{
    const auto it = _nodeRows.constFind(node);
    if (it == _nodeRows.cend())
        return QModelIndex();
    return createIndex(it->second, column, static_cast<OutlineItem *>(const_cast<Node *>(node)));
}

QModelIndex GroupOutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= columnCount())
        return QModelIndex();
    if (!parent.isValid()) {
        if (row >= _domains.size())
            return QModelIndex();
        return createIndex(row, column, static_cast<OutlineItem *>(_domains[row]));
    }
    OutlineItem *item = itemForIndex(parent);
    if (!item || item->isNode())
        return QModelIndex();
    auto *domain = static_cast<Domain *>(item);
    Node *node = domain->childAtIndex(row);
    return node ? createIndex(row, column, static_cast<OutlineItem *>(node)) : QModelIndex();
}

QModelIndex GroupOutlineModel::parent(const QModelIndex &child) const
{
    OutlineItem *item = itemForIndex(child);
    if (!item || !item->isNode())
        return QModelIndex();
    const auto it = _nodeRows.constFind(static_cast<Node *>(item));
    if (it == _nodeRows.cend())
        return QModelIndex();
    const int domainRow = it->first;
    return createIndex(domainRow, 0, static_cast<OutlineItem *>(_domains[domainRow]));
}

int GroupOutlineModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return int(_domains.size());
    if (parent.column() != 0)
        return 0;
    OutlineItem *item = itemForIndex(parent);
    if (!item || item->isNode())
        return 0;
    return static_cast<Domain *>(item)->childrenCount();
}

int GroupOutlineModel::columnCount(const QModelIndex &) const
{
    return 2;
}

bool GroupOutlineModel::hasChildren(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return !_domains.isEmpty();
    OutlineItem *item = itemForIndex(parent);
    return item && parent.column() == 0 && item->expandable();
}

QVariant GroupOutlineModel::data(const QModelIndex &index, int role) const
{
    OutlineItem *item = itemForIndex(index);
    if (!item)
        return QVariant();
    if (role == Qt::TextAlignmentRole && index.column() == 1)
        return int(Qt::AlignCenter);
    if (!item->isNode() || (role == Qt::DisplayRole && index.column() != 1)) {
        return role == Qt::DisplayRole ? objectValue(item, columnIdentifier(index.column()))
                                       : QVariant();
    }
    const auto *node = static_cast<const Node *>(item);
    if (role == Qt::DisplayRole) {
        const bool quiet = node->state() == Node::State::Done || node->state() == Node::State::Idle;
        return quiet && NodeTimes::isStale(*node, Clock::now()) ? NodeTimes::staleMark()
                                                                : node->itemStatus();
    }
    if (role == Qt::ToolTipRole) {
        const QString status =
            node->longStatus().isEmpty() ? node->nodeTitle() : node->longStatus();
        const QString stale = NodeTimes::staleReason(*node, Clock::now());
        return stale.isEmpty() ? status : status + QLatin1Char('\n') + stale;
    }
    return QVariant();
}

QVariant GroupOutlineModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case 0:
        return tr("Name");
    case 1:
        return tr("Status");
    default:
        return QVariant();
    }
}
