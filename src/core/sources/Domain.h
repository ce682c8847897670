#pragma once

#include "core/sources/Node.h"
#include "core/sources/OutlineItem.h"

#include <QList>
#include <QString>

#include <memory>
#include <vector>

class Node;

// A named, ordered list of nodes: one expandable branch of an image group's outline.
class Domain : public OutlineItem {
public:
    Domain();
    ~Domain() override;

    void setDomainName(const QString &name);
    QString domainName() const { return _domainName; }
    // Appends the node; the domain owns it from then on.
    Node *addNode(std::unique_ptr<Node> node);

    Node *childAtIndex(int index) const override;
    int childrenCount() const;
    QList<Node *> nodes() const;

    bool isNode() const override { return false; }
    bool expandable() const override { return !nodes_.empty(); }
    QString itemName() const override { return _domainName; }
    QString itemStatus() const override { return QString(); }

private:
    std::vector<std::unique_ptr<Node>> nodes_;
    QString _domainName;
};
