#pragma once

#include <QObject>

class QSocketNotifier;

// Turns SIGTERM and SIGINT into an orderly quit of the event loop, as a session logout would ask
// for: the shutdown sequence runs and the settings are saved. The signal handler itself only
// writes a byte to a pipe; the quit happens on the main thread.
class SignalQuitter : public QObject {
    Q_OBJECT

public:
    explicit SignalQuitter(QObject *parent = nullptr);
    ~SignalQuitter() override;

signals:
    void quitRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier *_notifier = nullptr;
};
