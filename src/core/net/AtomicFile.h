#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QFuture>
#include <QString>

#include <memory>

class QIODevice;

// A data file's replacement, written while its bytes arrive and put in place in one step: anyone
// reading the data file sees the old file or the new one, never part of either, also when the
// process is killed in the middle. The bytes go to a temporary file in the target's folder, which
// commit() renames over the target; one that is never committed is removed. A target folder that
// is missing is made (with its parents) when the first bytes arrive. Where the system
// allows it (Linux), Qt creates that file without a name and names it ("name.XXXXXX") only just
// before the rename, so a killed transfer leaves nothing behind; elsewhere the file has its name
// from the start, and the next start removes what a killed one left (AppCore).
//
// Writing as the bytes arrive keeps a large transfer out of memory. The writing itself, and the
// rename at the end, happen on a worker thread, in the order they were asked for: a write can
// wait for the disk for tens of milliseconds when it is busy, and a rename over an existing file
// makes the file system put the new file's blocks in place first. The caller never waits for the
// disk, except when more than kMaximumPending bytes are still waiting for it (a disk slower than
// the network: the transfer then slows to the disk's pace instead of filling memory) and in the
// calls that need the bytes on disk (contents(), commit()). A program without an interface may
// have the writing done in place instead (setWriting()): nothing waits for its main thread, and
// handing every piece to another thread only costs time.
//
// The data is not forced to the disk before the rename. A data file is a cache of something the
// network can give again; waiting for the disk on every download would buy only survival of a
// power cut.
class AtomicFile {
public:
    explicit AtomicFile(const QString &path);
    // Whatever was not yet written is dropped; a commit already under way still ends.
    ~AtomicFile();
    AtomicFile(const AtomicFile &) = delete;
    AtomicFile &operator=(const AtomicFile &) = delete;

    enum class Writing { OnWorkerThread, InPlace };
    // For the whole process, before the first file is written.
    static void setWriting(Writing writing);

    static constexpr qint64 kMaximumPending = qint64(4) * 1024 * 1024;
    // Small pieces are gathered to this size before they go to the worker, so that it is woken
    // once per piece of this size, not once per network delivery.
    static constexpr qint64 kHandOverSize = qint64(256) * 1024;

    // Adds bytes at the end. A failure to write is remembered for commit(); the bytes still
    // count in size(), which is what the transfer delivered.
    void append(QByteArrayView chunk);
    // The same for at most maxSize bytes read from the device, read straight to where they wait
    // for the worker; how many were read (0 or less: none, as QIODevice::read() says).
    qint64 appendFrom(QIODevice &device, qint64 maxSize);
    // Forgets everything appended so far.
    void clear();
    // Reads back what was appended so far (nothing when a write failed), for a check of the
    // whole body before commit(). Waits for the writes.
    QByteArray contents();
    qint64 size() const { return _size; }
    bool isEmpty() const { return _size == 0; }
    // Puts the bytes in place of the target; false (and the target untouched) when any write
    // failed or the rename did. Waits for the writes and the rename.
    bool commit();
    // The same, after the writes asked for so far, without waiting: the result comes with the
    // future (which is cancelled instead when this object goes first). Written in place, the
    // future is finished on return.
    QFuture<bool> commitInBackground();
    // When the data was made, given to the target as its modification time once it is in place
    // (never a time later than that moment); none (the default) leaves the time of the write.
    // Kept across clear(): it belongs to the answer, not to its bytes.
    void setModificationTime(const QDateTime &time) { _modificationTime = time; }

private:
    struct Writer;

    // Gives the gathered bytes to the worker.
    void handOver();

    std::shared_ptr<Writer> _writer;
    QByteArray _gathered;
    qint64 _size = 0;
    QDateTime _modificationTime;
};
