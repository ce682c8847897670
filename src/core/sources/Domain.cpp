#include "core/sources/Domain.h"

#include "core/sources/Node.h"

Domain::Domain() = default;
Domain::~Domain() = default;

void Domain::setDomainName(const QString &name)
{
    _domainName = name;
}

Node *Domain::addNode(std::unique_ptr<Node> node)
{
    nodes_.push_back(std::move(node));
    return nodes_.back().get();
}

Node *Domain::childAtIndex(int index) const
{
    if (index < 0 || size_t(index) >= nodes_.size())
        return nullptr;
    return nodes_[size_t(index)].get();
}

int Domain::childrenCount() const
{
    return int(nodes_.size());
}

QList<Node *> Domain::nodes() const
{
    QList<Node *> result;
    result.reserve(qsizetype(nodes_.size()));
    for (const auto &node : nodes_)
        result.append(node.get());
    return result;
}
