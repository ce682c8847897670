#pragma once

#include <QLabel>

class Node;

// The line that tells when an item's data was made and how old it is ("Data from 07:51 UTC,
// 2 h 10 min ago"), shown next to its last update. Stale data is told in a warning colour, with
// the reason in the tooltip. The texts and the rule are the core's (NodeTimes).
class DataAgeLine : public QLabel {
    Q_OBJECT

public:
    explicit DataAgeLine(QWidget *parent = nullptr);

    // The node's data as of now; nothing without a node or without data.
    void showNode(const Node *node);
    bool showsStale() const { return _stale; }

protected:
    void changeEvent(QEvent *event) override;

private:
    void applyColour();

    bool _stale = false;
};
