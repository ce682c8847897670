#include "core/sources/Domain.h"

#include "core/sources/Node.h"

Domain::Domain() = default;
Domain::~Domain() = default;

void Domain::setDomainName(const QString &name)
{
    _domainName = name;
}

void Domain::addNode(Node *node)
{
    nodes_.append(node);
}

Node *Domain::childAtIndex(int index) const
{
    if (index < 0 || index >= nodes_.size())
        return nullptr;
    return nodes_.at(index);
}

int Domain::childrenCount() const
{
    return int(nodes_.size());
}
