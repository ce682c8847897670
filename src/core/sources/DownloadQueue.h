#pragma once

#include <QList>
#include <QString>

class Node;

// The ordered list of nodes waiting to download in one view. Only the head ever downloads, so a
// view runs one transfer at a time. The queue refers to nodes, it does not own them, and compares
// them by identity.
//
// Nodes call back into their view while the queue works on them (a status change from add(), an
// immediate failure from check()), so every operation leaves the list consistent before it calls
// out: append before setting the status, remove before checking.
class DownloadQueue {
public:
    // The long status that a newly queued node shows: "-" in the image groups, "Queued..." in the
    // Alerts group. The short status is always "-".
    explicit DownloadQueue(const QString &queuedLongStatus);

    // Appends the node unless it is already queued, marks it queued and starts the head if idle.
    void add(Node *node);
    bool contains(const Node *node) const;
    // Takes the node out if present; starts nothing.
    void remove(const Node *node);
    // Starts the head if it is not already downloading.
    void check();
    // Empties the queue for good: later additions are ignored.
    void end();

    bool isEmpty() const { return _nodes.isEmpty(); }
    const QList<Node *> &nodes() const { return _nodes; }

private:
    QList<Node *> _nodes;
    QString _queuedLongStatus;
    bool _ended = false;
};
