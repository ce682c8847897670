#pragma once

#include <QSettings>
#include <QTimer>

// The QSettings object behind Settings. A change is kept in memory and written out a little
// later, together with whatever else changed meanwhile, instead of on the next turn of the event
// loop as QSettings does by itself. Each write rewrites the whole file and waits for the disk,
// on the main thread; with that done after every change, a few transfers ending or a user
// clicking through the outline held up the interface once per change, for tens of milliseconds
// on a busy disk. A process that is killed loses at most the changes of that short window;
// anything that ends in order calls Settings::sync() first.
class SettingsStore : public QSettings {
    Q_OBJECT

public:
    // How long a change may wait before it is written.
    static constexpr int kWriteDelayMilliseconds = 2000;

    SettingsStore();
    ~SettingsStore() override;

    // Writes every pending change now.
    void writeNow();

protected:
    bool event(QEvent *event) override;

private:
    QTimer _writeTimer;
};
