#include "core/net/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QIODevice>
#include <QMutex>
#include <QPromise>
#include <QTemporaryFile>
#include <QThreadPool>
#include <QWaitCondition>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <deque>
#include <utility>

namespace {

std::atomic<AtomicFile::Writing> writing = AtomicFile::Writing::OnWorkerThread;

} // namespace

// What the worker thread is asked to do, in order. The file itself is touched only by the one
// job running, or by the owner's thread once no job runs (after waitUntilIdle()).
struct AtomicFile::Writer {
    struct Job {
        enum class Kind { Write, Clear, Commit } kind;
        QByteArray bytes;
        std::shared_ptr<QPromise<bool>> result;
        QDateTime modificationTime = {};
    };

    explicit Writer(const QString &target) : path(target) {}

    const QString path;
    std::unique_ptr<QTemporaryFile> file;
    bool failed = false;

    QMutex mutex;
    QWaitCondition changed;
    std::deque<Job> jobs;
    qint64 pendingBytes = 0;
    // A worker is taking jobs from the queue; it stops when it finds the queue empty.
    bool working = false;

    void write(const QByteArray &bytes)
    {
        if (failed)
            return;
        if (!file) {
            // Opened with the first bytes: a transfer that fails before any arrive leaves
            // nothing. The folder is made again if it went away (the user may delete the data
            // folder at any time), so downloads go on filling it.
            const QFileInfo target(path);
            QDir().mkpath(target.absolutePath());
            file = std::make_unique<QTemporaryFile>(target.absolutePath() + QLatin1Char('/') +
                                                    target.fileName() + QStringLiteral(".XXXXXX"));
            file->setAutoRemove(true);
            if (!file->open()) {
                failed = true;
                return;
            }
        }
        if (file->write(bytes) != bytes.size())
            failed = true;
    }

    void truncate()
    {
        failed = false;
        if (file && file->isOpen() && (!file->resize(0) || !file->seek(0)))
            failed = true;
    }

    bool commit(const QDateTime &modificationTime)
    {
        if (failed || !file || !file->flush())
            return false;
        // A replacement keeps the permissions of what it replaces; a new file is readable by
        // all, as files made by the user's other programs are.
        const QFileDevice::Permissions permissions =
            QFileInfo::exists(path) ? QFile::permissions(path)
                                    : QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                          QFileDevice::ReadGroup | QFileDevice::ReadOther;
        file->setPermissions(permissions);
        file->close();
        // From here until the rename the file has a name that a killed process would leave
        // behind. Two workers putting files in place in one folder at the same time wait for each
        // other inside the system calls, with the name made or about to be, for as long as a
        // rename takes (ext4 puts the new file's blocks in place first: milliseconds); they wait
        // here instead, before any name is made.
        static QBasicMutex renaming;
        const QMutexLocker locker(&renaming);
        if (std::rename(QFile::encodeName(file->fileName()).constData(),
                        QFile::encodeName(path).constData()) != 0)
            return false;
        file->setAutoRemove(false);
        // Dated once in place, not before: a temporary file with an old date could pass for one
        // a killed write left behind, and be swept away (AppCore). A date that cannot be set
        // leaves the time of the write, which is a fair answer too.
        if (modificationTime.isValid()) {
            QFile target(path);
            if (target.open(QIODevice::ReadOnly))
                target.setFileTime(std::min(modificationTime, QDateTime::currentDateTimeUtc()),
                                   QFileDevice::FileModificationTime);
        }
        return true;
    }

    static void enqueue(const std::shared_ptr<Writer> &writer, Job job)
    {
        QMutexLocker locker(&writer->mutex);
        writer->pendingBytes += job.bytes.size();
        writer->jobs.push_back(std::move(job));
        if (writer->working)
            return;
        writer->working = true;
        if (writing == Writing::InPlace) {
            locker.unlock();
            work(*writer);
            return;
        }
        QThreadPool::globalInstance()->start([writer] { work(*writer); });
    }

    static void work(Writer &writer)
    {
        QMutexLocker locker(&writer.mutex);
        while (!writer.jobs.empty()) {
            Job job = std::move(writer.jobs.front());
            writer.jobs.pop_front();
            locker.unlock();
            switch (job.kind) {
            case Job::Kind::Write:
                writer.write(job.bytes);
                break;
            case Job::Kind::Clear:
                writer.truncate();
                break;
            case Job::Kind::Commit:
                job.result->start();
                job.result->addResult(writer.commit(job.modificationTime));
                job.result->finish();
                break;
            }
            locker.relock();
            writer.pendingBytes -= job.bytes.size();
            writer.changed.wakeAll();
        }
        writer.working = false;
        writer.changed.wakeAll();
    }

    void waitUntilIdle()
    {
        QMutexLocker locker(&mutex);
        while (working)
            changed.wait(&mutex);
    }

    void waitForRoom()
    {
        QMutexLocker locker(&mutex);
        while (pendingBytes > kMaximumPending)
            changed.wait(&mutex);
    }
};

void AtomicFile::setWriting(Writing where)
{
    writing = where;
}

AtomicFile::AtomicFile(const QString &path) : _writer(std::make_shared<Writer>(path)) {}

AtomicFile::~AtomicFile()
{
    // The worker holds the writer until it stops; the temporary file, unless committed, goes
    // with the writer.
    QMutexLocker locker(&_writer->mutex);
    for (const Writer::Job &job : _writer->jobs)
        _writer->pendingBytes -= job.bytes.size();
    _writer->jobs.clear();
}

void AtomicFile::append(QByteArrayView chunk)
{
    _size += chunk.size();
    if (chunk.isEmpty())
        return;
    if (_gathered.isEmpty())
        _gathered.reserve(std::max(kHandOverSize, chunk.size()));
    _gathered.append(chunk);
    if (_gathered.size() >= kHandOverSize)
        handOver();
}

qint64 AtomicFile::appendFrom(QIODevice &device, qint64 maxSize)
{
    if (maxSize <= 0)
        return 0;
    // Room for the bytes without moving what is gathered already.
    if (!_gathered.isEmpty() && _gathered.size() + maxSize > _gathered.capacity())
        handOver();
    if (_gathered.isEmpty())
        _gathered.reserve(std::max(kHandOverSize, maxSize));
    const qsizetype gathered = _gathered.size();
    _gathered.resize(gathered + maxSize);
    const qint64 count = device.read(_gathered.data() + gathered, maxSize);
    _gathered.resize(gathered + std::max<qint64>(count, 0));
    if (count > 0) {
        _size += count;
        if (_gathered.size() >= kHandOverSize)
            handOver();
    }
    return count;
}

void AtomicFile::handOver()
{
    if (_gathered.isEmpty())
        return;
    _writer->waitForRoom();
    Writer::enqueue(_writer, {Writer::Job::Kind::Write, std::exchange(_gathered, {}), nullptr});
}

void AtomicFile::clear()
{
    _size = 0;
    _gathered.clear();
    Writer::enqueue(_writer, {Writer::Job::Kind::Clear, {}, nullptr});
}

QByteArray AtomicFile::contents()
{
    handOver();
    _writer->waitUntilIdle();
    QTemporaryFile *file = _writer->file.get();
    if (_writer->failed || !file || !file->flush() || !file->seek(0))
        return QByteArray();
    const QByteArray bytes = file->readAll();
    if (!file->seek(file->size()))
        _writer->failed = true;
    return bytes;
}

bool AtomicFile::commit()
{
    handOver();
    _writer->waitUntilIdle();
    return _writer->commit(_modificationTime);
}

QFuture<bool> AtomicFile::commitInBackground()
{
    handOver();
    auto result = std::make_shared<QPromise<bool>>();
    QFuture<bool> future = result->future();
    Writer::enqueue(_writer, {Writer::Job::Kind::Commit, {}, std::move(result), _modificationTime});
    return future;
}
