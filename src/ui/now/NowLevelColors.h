#pragma once

#include <QColor>

class QLabel;

// The colours of the space-weather scales' levels (G, R and S, 0 to 5), from green through yellow
// and orange to dark red, as forecasters and their readers know them. They are the view's only
// fixed colours besides the charts' lines: each is drawn as a badge with its own text colour, so
// it reads the same on a light or a dark palette.
class NowLevelColors {
public:
    static QColor background(int level);
    static QColor text(int level);
    // Makes the label a badge of the level: its colours, a little padding, bold text.
    static void paintBadge(QLabel *label, int level);
};
