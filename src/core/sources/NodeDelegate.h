#pragma once

#include <QString>

class Node;

// What a node tells the view that owns it. Every callback is optional: the defaults do nothing.
// All four arrive on the main thread, from inside the node's own operations.
class NodeDelegate {
public:
    virtual ~NodeDelegate() = default;

    // After every status change (not for the initial status set at creation).
    virtual void nodeHasMessage(Node *node) { Q_UNUSED(node); }
    // After automatic updating or its rate changed and the next update was recomputed.
    virtual void nodeDidChangeUpdateSettings(Node *node) { Q_UNUSED(node); }
    // Once per successful download, after the data file was replaced and the status set.
    virtual void nodeFileDidLoad(Node *node) { Q_UNUSED(node); }
    // Once per failed download, with a complete text ready for the activity log.
    virtual void nodeDidFailWithError(Node *node, const QString &error)
    {
        Q_UNUSED(node);
        Q_UNUSED(error);
    }
};
