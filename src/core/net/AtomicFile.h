#pragma once

#include <QByteArrayView>
#include <QDateTime>
#include <QString>

#include <memory>

class QTemporaryFile;

// A data file's replacement, written while its bytes arrive and put in place in one step: anyone
// reading the data file sees the old file or the new one, never part of either, also when the
// process is killed in the middle. The bytes go to a temporary file in the target's folder, which
// commit() renames over the target; one that is never committed is removed. A target folder that
// is missing is made (with its parents) when the first bytes arrive. Where the system
// allows it (Linux), Qt creates that file without a name and names it ("name.XXXXXX") only just
// before the rename, so a killed transfer leaves nothing behind; elsewhere the file has its name
// from the start, and the next start removes what a killed one left (AppCore).
//
// Writing as the bytes arrive keeps a large transfer out of memory and spreads the cost of
// writing it over its deliveries, instead of one long pause of the event loop at the end.
//
// The data is not forced to the disk before the rename. A data file is a cache of something the
// network can give again; waiting for the disk on every download stalled the event loop for
// tens of milliseconds per file, up to a second on a busy disk, and would buy only survival of a
// power cut.
class AtomicFile {
public:
    explicit AtomicFile(const QString &path);
    ~AtomicFile();
    AtomicFile(const AtomicFile &) = delete;
    AtomicFile &operator=(const AtomicFile &) = delete;

    // Adds bytes at the end. A failure to write is remembered for commit(); the bytes still
    // count in size(), which is what the transfer delivered.
    void append(QByteArrayView chunk);
    // Forgets everything appended so far.
    void clear();
    // Reads back what was appended so far (nothing when a write failed), for a check of the
    // whole body before commit().
    QByteArray contents();
    qint64 size() const { return _size; }
    bool isEmpty() const { return _size == 0; }
    // Puts the bytes in place of the target; false (and the target untouched) when any write
    // failed or the rename did.
    bool commit();
    // When the data was made, given to the target as its modification time once it is in place
    // (never a time later than that moment); none (the default) leaves the time of the write.
    // Kept across clear(): it belongs to the answer, not to its bytes.
    void setModificationTime(const QDateTime &time) { _modificationTime = time; }

private:
    QString _path;
    std::unique_ptr<QTemporaryFile> _file;
    qint64 _size = 0;
    bool _failed = false;
    QDateTime _modificationTime;
};
