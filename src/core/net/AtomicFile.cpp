#include "core/net/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <algorithm>
#include <cstdio>

AtomicFile::AtomicFile(const QString &path) : _path(path) {}

// The temporary file, unless committed, goes with the QTemporaryFile.
AtomicFile::~AtomicFile() = default;

void AtomicFile::append(QByteArrayView chunk)
{
    _size += chunk.size();
    if (_failed || chunk.isEmpty())
        return;
    if (!_file) {
        // Opened with the first bytes: a transfer that fails before any arrive leaves nothing.
        // The folder is made again if it went away (the user may delete the data folder at any
        // time), so downloads go on filling it.
        const QFileInfo target(_path);
        QDir().mkpath(target.absolutePath());
        _file = std::make_unique<QTemporaryFile>(target.absolutePath() + QLatin1Char('/') +
                                                 target.fileName() + QStringLiteral(".XXXXXX"));
        _file->setAutoRemove(true);
        if (!_file->open()) {
            _failed = true;
            return;
        }
    }
    if (_file->write(chunk.data(), chunk.size()) != chunk.size())
        _failed = true;
}

void AtomicFile::clear()
{
    _size = 0;
    _failed = false;
    if (_file && _file->isOpen() && (!_file->resize(0) || !_file->seek(0)))
        _failed = true;
}

QByteArray AtomicFile::contents()
{
    if (_failed || !_file || !_file->flush() || !_file->seek(0))
        return QByteArray();
    const QByteArray bytes = _file->readAll();
    if (!_file->seek(_file->size()))
        _failed = true;
    return bytes;
}

bool AtomicFile::commit()
{
    if (_failed || !_file || !_file->flush())
        return false;
    // A replacement keeps the permissions of what it replaces; a new file is readable by all,
    // as files made by the user's other programs are.
    const QFileDevice::Permissions permissions =
        QFileInfo::exists(_path) ? QFile::permissions(_path)
                                 : QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                       QFileDevice::ReadGroup | QFileDevice::ReadOther;
    _file->setPermissions(permissions);
    _file->close();
    if (std::rename(QFile::encodeName(_file->fileName()).constData(),
                    QFile::encodeName(_path).constData()) != 0)
        return false;
    _file->setAutoRemove(false);
    // Dated once in place, not before: a temporary file with an old date could pass for one a
    // killed write left behind, and be swept away (AppCore). A date that cannot be set leaves
    // the time of the write, which is a fair answer too.
    if (_modificationTime.isValid()) {
        QFile target(_path);
        if (target.open(QIODevice::ReadOnly))
            target.setFileTime(std::min(_modificationTime, QDateTime::currentDateTimeUtc()),
                               QFileDevice::FileModificationTime);
    }
    return true;
}
