#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <utility>

// Reads the Now group's data files and summarises them (NowSummary) on a thread of its own: the
// one-minute files are megabytes of JSON, and reading them on the main thread would hold up the
// window for many frames. Requests are carried out one at a time; only the answer to the newest
// is delivered, on the loader's own thread.
class NowSummaryLoader : public QObject {
    Q_OBJECT

public:
    explicit NowSummaryLoader(QObject *parent = nullptr);
    // Waits for the reading under way.
    ~NowSummaryLoader() override;

    // The files as (kind, path) pairs; the summary is as of the clock's present moment.
    void request(const QList<std::pair<QString, QString>> &files);

signals:
    // The summary (the object `vantorel now --json` prints), the messages' whole texts in the
    // order of its "messages", and what could not be read.
    void loaded(const QJsonObject &summary, const QStringList &messageTexts,
                const QStringList &problems);

private:
    QThreadPool _pool;
    QAtomicInt _newest;
};
