#pragma once

#include "core/now/NowSample.h"

#include <QHash>
#include <QString>

#include <functional>

class LogSink;
class QSqlDatabase;
class QSqlError;

// The local history of the providers' data: every checked download is merged into one SQLite
// database in the data folder ("History.sqlite"), so that charts reach further back than the
// providers' files (the solar-wind files hold one day). Samples are kept by kind, series and time;
// a later download of the same minute replaces what was kept, and samples older than the
// retention go.
//
// The database keeps a write-ahead journal: a process killed during a merge loses that merge and
// nothing else. A file that cannot be used as a database is moved aside, with a line in the log,
// and a new history started: a damaged history must never stop the application. Emptying the
// cache leaves the history alone; clear() is its own command.
//
// An instance belongs to the thread that uses it (a Qt SQL connection does); NowRecorder runs one
// on a thread of its own, so that merging never holds up the window.
class NowHistory {
public:
    explicit NowHistory(const QString &path, LogSink *log = nullptr);
    ~NowHistory();
    NowHistory(const NowHistory &) = delete;
    NowHistory &operator=(const NowHistory &) = delete;

    static constexpr const char *kFileName = "History.sqlite";
    static QString pathInFolder(const QString &dataFolder);

    // Opens the database, creating it when needed; merge() and the others open it themselves.
    // False only when no history can be had at all (no SQLite driver for Qt, a folder that cannot
    // be written), with the reason in lastError().
    bool open();
    bool isOpen() const { return _open; }
    QString lastError() const { return _lastError; }

    // Merges the samples of one file in one transaction; returns how many were written (samples
    // older than the retention are not), or -1 when the merge failed and nothing changed. The
    // kind's series also lose what they kept from before the retention.
    int merge(const QString &kind, const NowSamples &samples, qint64 now, int retentionDays);
    // What is kept of one series from `from` to `to` (inclusive), oldest first.
    NowSamples samples(const QString &kind, const QString &series, qint64 from, qint64 to);
    // The values of the same, without the samples that have none, handed to `take` one at a time:
    // a long span of one-minute rows is read without building a list of them.
    void scanValues(const QString &kind, const QString &series, qint64 from, qint64 to,
                    const std::function<void(qint64 time, double value)> &take);
    // Forgets everything kept; the file stays, emptied.
    bool clear();

private:
    QSqlDatabase database() const;
    bool openFile(QSqlError *error);
    void close();
    // Moves an unusable file (and its journal) aside with a log line; true when the way is clear
    // for a new one.
    bool moveAside(const QString &reason);
    int mergeOnce(const QString &kind, const NowSamples &samples, qint64 now, int retentionDays,
                  bool *damaged);
    qint64 seriesId(const QString &kind, const QString &series, bool create);

    QString _path;
    QString _connection;
    LogSink *_log = nullptr;
    bool _open = false;
    QString _lastError;
    QHash<QString, qint64> _seriesIds;
};
