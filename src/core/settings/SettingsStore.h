#pragma once

#include <QSettings>
#include <QTimer>

// The QSettings object behind Settings. A change is kept in memory and written out a little
// later, together with whatever else changed meanwhile, on a worker thread; QSettings by itself
// writes on the next turn of the event loop, on the thread the object lives in. Each write
// rewrites the whole file and waits for the disk twice (the lock file and the file itself): done
// on the main thread after every change, a few transfers ending or a click in an outline held
// up the interface, for a quarter of a second once on a busy disk. A process that is killed
// loses at most the changes of that short window; anything that ends in order calls
// Settings::sync() first, which writes at once.
//
// The worker writes through a QSettings object of its own for the same file: QSettings objects
// for one file in one process share what they hold, changes not yet written included, so the
// worker's object writes this one's changes. While it writes, a read or change here waits for it.
class SettingsStore : public QSettings {
    Q_OBJECT

public:
    // How long a change may wait before it is written.
    static constexpr int kWriteDelayMilliseconds = 2000;

    SettingsStore();
    ~SettingsStore() override;

    // Writes every pending change now, on the calling thread, after a write under way elsewhere.
    void writeNow();

protected:
    bool event(QEvent *event) override;

private:
    void writeInBackground();
    void backgroundWriteDone(bool wrote);

    QTimer _writeTimer;
    bool _writing = false;
    // Written at once (writeNow()) and changed again while the worker wrote.
    bool _changedWhileWriting = false;
};
