#pragma once

#include <QList>
#include <QRect>
#include <QStringList>

// How a split view's panes are kept in the settings: one rectangle text per pane, in pane order,
// with a collapsed pane stored as the zero rectangle so that it comes back collapsed.
class SplitLayout {
public:
    // The texts to store for panes with these frames; a collapsed pane gives the zero rectangle.
    static QStringList storedRects(const QList<QRect> &frames, const QList<bool> &collapsed);

    // The frames to give the panes: for each pane that has a stored text, the stored rectangle, or
    // when that has no area, the pane's current frame with no extent along the dividing axis (no
    // width when the panes sit side by side). Panes beyond the stored texts keep their frames;
    // stored texts beyond the panes are ignored.
    static QList<QRect> restoredRects(const QStringList &stored, const QList<QRect> &current,
                                      bool sideBySide);
};
