#include "core/now/NowHistory.h"

#include "core/log/LogSink.h"

#include <QAtomicInt>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

QAtomicInt connectionCount;

// SQLite's own words for a file that is not a database, or one whose insides are broken.
bool isDamage(const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    return code == QLatin1String("11") || code == QLatin1String("26");
}

QVariant nullOr(bool has, const QVariant &value, QMetaType type)
{
    return has ? value : QVariant(type);
}

} // namespace

NowHistory::NowHistory(const QString &path, LogSink *log)
    : _path(path),
      _connection(QStringLiteral("vantorel-history-%1").arg(connectionCount.fetchAndAddRelaxed(1))),
      _log(log)
{
}

NowHistory::~NowHistory()
{
    close();
}

QString NowHistory::pathInFolder(const QString &dataFolder)
{
    return QDir(dataFolder).filePath(QLatin1String(kFileName));
}

QSqlDatabase NowHistory::database() const
{
    return QSqlDatabase::database(_connection, false);
}

void NowHistory::close()
{
    _open = false;
    _seriesIds.clear();
    if (!QSqlDatabase::contains(_connection))
        return;
    database().close();
    QSqlDatabase::removeDatabase(_connection);
}

bool NowHistory::open()
{
    if (_open)
        return true;
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE"))) {
        _lastError = QStringLiteral("Qt has no SQLite driver (on Debian: libqt6sql6-sqlite)");
        return false;
    }
    QDir().mkpath(QFileInfo(_path).absolutePath());
    QSqlError error;
    if (openFile(&error))
        return true;
    // Only a file that is not a database, or a broken one, is moved aside; a busy or unwritable
    // one is left as it is for the next attempt.
    close();
    return isDamage(error) && moveAside(_lastError) && openFile(&error);
}

bool NowHistory::openFile(QSqlError *error)
{
    QSqlDatabase db = QSqlDatabase::contains(_connection)
                          ? database()
                          : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), _connection);
    db.setDatabaseName(_path);
    // The window and `vantorel fetch` may merge at the same time; one waits for the other.
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open()) {
        *error = db.lastError();
        _lastError = error->text();
        return false;
    }
    // With a write-ahead journal a commit needs no wait for the disk, and a process killed in the
    // middle of a merge loses that merge only.
    static const char *const statements[] = {
        "PRAGMA journal_mode=WAL",
        "PRAGMA synchronous=NORMAL",
        "CREATE TABLE IF NOT EXISTS series (id INTEGER PRIMARY KEY, kind TEXT NOT NULL, "
        "name TEXT NOT NULL, UNIQUE (kind, name))",
        "CREATE TABLE IF NOT EXISTS samples (series INTEGER NOT NULL, time INTEGER NOT NULL, "
        "value REAL, text TEXT, PRIMARY KEY (series, time)) WITHOUT ROWID",
    };
    QSqlQuery query(db);
    for (const char *statement : statements) {
        if (!query.exec(QLatin1String(statement))) {
            *error = query.lastError();
            _lastError = error->text();
            return false;
        }
    }
    _open = true;
    return true;
}

bool NowHistory::moveAside(const QString &reason)
{
    close();
    const QString aside =
        _path + QStringLiteral(".damaged-") +
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd'T'HHmmss"));
    const bool moved = !QFileInfo::exists(_path) || QFile::rename(_path, aside);
    // The journal belongs to the damaged file; a new database must not pick it up.
    for (const char *suffix : {"-wal", "-shm", "-journal"}) {
        const QString journal = _path + QLatin1String(suffix);
        if (QFileInfo::exists(journal) && !QFile::rename(journal, aside + QLatin1String(suffix)))
            QFile::remove(journal);
    }
    const QString message =
        moved ? QStringLiteral("The history \"%1\" cannot be used (%2); it was moved to \"%3\" "
                               "and a new one started.")
                    .arg(_path, reason, aside)
              : QStringLiteral("The history \"%1\" cannot be used (%2) and cannot be moved aside.")
                    .arg(_path, reason);
    if (_log)
        _log->addErrorToLog(message);
    else
        qWarning().noquote() << message;
    return moved;
}

qint64 NowHistory::seriesId(const QString &kind, const QString &series, bool create)
{
    const QString key = kind + QChar(0x1f) + series;
    if (const auto it = _seriesIds.constFind(key); it != _seriesIds.constEnd())
        return *it;
    QSqlQuery query(database());
    query.prepare(QStringLiteral("SELECT id FROM series WHERE kind = ? AND name = ?"));
    query.addBindValue(kind);
    query.addBindValue(series);
    qint64 id = -1;
    if (query.exec() && query.next()) {
        id = query.value(0).toLongLong();
    } else if (create) {
        query.prepare(QStringLiteral("INSERT INTO series (kind, name) VALUES (?, ?)"));
        query.addBindValue(kind);
        query.addBindValue(series);
        if (!query.exec()) {
            _lastError = query.lastError().text();
            return -1;
        }
        id = query.lastInsertId().toLongLong();
    }
    if (id >= 0)
        _seriesIds.insert(key, id);
    return id;
}

int NowHistory::merge(const QString &kind, const NowSamples &samples, qint64 now, int retentionDays)
{
    if (!open())
        return -1;
    bool damaged = false;
    int written = mergeOnce(kind, samples, now, retentionDays, &damaged);
    QSqlError error;
    if (written < 0 && damaged && moveAside(_lastError) && openFile(&error))
        written = mergeOnce(kind, samples, now, retentionDays, &damaged);
    if (written < 0) {
        const QString message =
            QStringLiteral("The history could not take the \"%1\" data: %2").arg(kind, _lastError);
        if (_log)
            _log->addErrorToLog(message);
        else
            qWarning().noquote() << message;
    }
    return written;
}

int NowHistory::mergeOnce(const QString &kind, const NowSamples &samples, qint64 now,
                          int retentionDays, bool *damaged)
{
    QSqlDatabase db = database();
    const auto fail = [&](const QSqlError &error) {
        _lastError = error.text();
        *damaged = isDamage(error);
        db.rollback();
        // Series made in the transaction are gone with it.
        _seriesIds.clear();
        return -1;
    };
    if (!db.transaction())
        return fail(db.lastError());

    const qint64 cutoff = now - qint64(retentionDays) * 86400;
    QSqlQuery insert(db);
    // A later download of the same minute replaces what was kept; most of a new download
    // repeats the last one, and rows that did not change are not written again.
    insert.prepare(QStringLiteral(
        "INSERT INTO samples (series, time, value, text) VALUES (?, ?, ?, ?) "
        "ON CONFLICT (series, time) DO UPDATE SET value = excluded.value, text = excluded.text "
        "WHERE value IS NOT excluded.value OR text IS NOT excluded.text"));
    int written = 0;
    for (const NowSample &sample : samples) {
        if (sample.time < cutoff)
            continue;
        const qint64 id = seriesId(kind, sample.series, true);
        if (id < 0)
            return fail(db.lastError());
        insert.bindValue(0, id);
        insert.bindValue(1, sample.time);
        insert.bindValue(2, nullOr(sample.hasValue(), sample.value, QMetaType::fromType<double>()));
        insert.bindValue(
            3, nullOr(!sample.text.isEmpty(), sample.text, QMetaType::fromType<QString>()));
        if (!insert.exec())
            return fail(insert.lastError());
        ++written;
    }
    QSqlQuery prune(db);
    prune.prepare(QStringLiteral("DELETE FROM samples WHERE series IN "
                                 "(SELECT id FROM series WHERE kind = ?) AND time < ?"));
    prune.addBindValue(kind);
    prune.addBindValue(cutoff);
    if (!prune.exec())
        return fail(prune.lastError());
    if (!db.commit())
        return fail(db.lastError());
    return written;
}

NowSamples NowHistory::samples(const QString &kind, const QString &series, qint64 from, qint64 to)
{
    NowSamples result;
    if (!open())
        return result;
    const qint64 id = seriesId(kind, series, false);
    if (id < 0)
        return result;
    QSqlQuery query(database());
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT time, value, text FROM samples WHERE series = ? AND "
                                 "time BETWEEN ? AND ? ORDER BY time"));
    query.addBindValue(id);
    query.addBindValue(from);
    query.addBindValue(to);
    if (!query.exec())
        return result;
    while (query.next()) {
        const QVariant value = query.value(1);
        result.append({series, query.value(0).toLongLong(),
                       value.isNull() ? std::nan("") : value.toDouble(),
                       query.value(2).toString()});
    }
    return result;
}

void NowHistory::scanValues(const QString &kind, const QString &series, qint64 from, qint64 to,
                            const std::function<void(qint64, double)> &take)
{
    if (!open())
        return;
    const qint64 id = seriesId(kind, series, false);
    if (id < 0)
        return;
    QSqlQuery query(database());
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT time, value FROM samples WHERE series = ? AND "
                                 "time BETWEEN ? AND ? AND value IS NOT NULL ORDER BY time"));
    query.addBindValue(id);
    query.addBindValue(from);
    query.addBindValue(to);
    if (!query.exec())
        return;
    while (query.next())
        take(query.value(0).toLongLong(), query.value(1).toDouble());
}

bool NowHistory::clear()
{
    if (!open())
        return false;
    QSqlQuery query(database());
    _seriesIds.clear();
    // Emptied, then shrunk: a history of a year of one-minute data is large.
    for (const char *statement : {"DELETE FROM samples", "DELETE FROM series", "VACUUM"}) {
        if (!query.exec(QLatin1String(statement))) {
            _lastError = query.lastError().text();
            return false;
        }
    }
    return true;
}
