#pragma once

#include <QString>

// The questions the group outline asks of every row, answered alike by branches (domains) and
// leaves (nodes), so the outline never needs to know which one it holds.
class OutlineItem {
public:
    virtual ~OutlineItem() = default;

    virtual bool isNode() const = 0;
    virtual bool expandable() const = 0;
    virtual OutlineItem *childAtIndex(int index) const = 0;
    virtual QString itemName() const = 0;
    virtual QString itemStatus() const = 0;
};
