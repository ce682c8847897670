#pragma once

#include <QObject>

class QTimer;

// The window's one clock for what it shows about time: it ticks every 15 seconds, so that the
// ages of the data and the stale marks move on, and at once when the zone the times are shown in
// (or the palette that colours them) changes. Views connect to ticked() and redraw their times;
// redrawing a few texts is all a tick costs, so hidden views may redraw as well.
class TimeTicker : public QObject {
    Q_OBJECT

public:
    // The application's ticker, made (and started) on first use.
    static TimeTicker *shared();
    // Ticks now, for a change that every time shown must follow.
    void tellNow() { emit ticked(); }

    static constexpr int kIntervalMs = 15000;

signals:
    void ticked();

private:
    explicit TimeTicker(QObject *parent);

    QTimer *_timer;
};
