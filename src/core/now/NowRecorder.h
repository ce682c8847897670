#pragma once

#include "core/now/NowChartData.h"

#include <QObject>
#include <QString>

class QThread;

// Feeds the history from a thread of its own: reading a data file of a few megabytes and merging
// a day of one-minute samples takes far longer than a frame, so none of it runs on the main
// thread. Requests are carried out one at a time, in the order they were made; the answers come
// back as signals on the recorder's own thread.
class NowRecorder : public QObject {
    Q_OBJECT

public:
    explicit NowRecorder(const QString &databasePath, QObject *parent = nullptr);
    // Carries out what was asked before, then ends the thread.
    ~NowRecorder() override;

    // Reads the checked data file of that kind and merges its samples into the history, keeping
    // the retention that the preferences give. The aurora forecast ("ovation") is not kept.
    void record(const QString &kind, const QString &filePath);
    // Forgets the whole history (the user has confirmed it).
    void clearHistory();
    // Asks for what the charts show over the span before now, thinned to that many pixel
    // columns (see NowChartQuery); returns the request's number, which chartDataReady() carries.
    // A request still waiting when a newer one is made is dropped unanswered: a user clicking
    // through the ranges waits for one reading, not for all of them.
    int requestChartData(qint64 span, int columns);

signals:
    void recorded(const QString &kind, int samples);
    void chartDataReady(const NowChartData &data);
    void historyCleared(bool ok);
    // A line for the activity log: a damaged database moved aside, a merge that failed.
    void problem(const QString &message);

private:
    class Worker;
    QThread *_thread;
    Worker *_worker;
};
