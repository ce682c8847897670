#pragma once

#include "core/sources/Node.h"
#include "core/sources/OutlineItem.h"

#include <QList>
#include <QString>

class Node;

// A named, ordered list of nodes: one expandable branch of an image group's outline. The group
// owns the nodes; a domain only lists them.
class Domain : public OutlineItem {
public:
    Domain();
    ~Domain() override;

    void setDomainName(const QString &name);
    QString domainName() const { return _domainName; }
    void addNode(Node *node);

    Node *childAtIndex(int index) const override;
    int childrenCount() const;
    QList<Node *> nodes() const { return nodes_; }

    bool isNode() const override { return false; }
    bool expandable() const override { return !nodes_.isEmpty(); }
    QString itemName() const override { return _domainName; }
    QString itemStatus() const override { return QString(); }

private:
    QList<Node *> nodes_;
    QString _domainName;
};
