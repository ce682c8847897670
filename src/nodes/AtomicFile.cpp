#include "AtomicFile.h"

#include "ChunkBuffer.h"

#include <QFileInfo>
#include <QTemporaryFile>

#include <cstdio>

bool AtomicFile::write(const QString &path, const ChunkBuffer &data)
{
    const QFileInfo target(path);
    QTemporaryFile temporary(target.absolutePath() + QLatin1Char('/') + target.fileName() +
                             QStringLiteral(".XXXXXX"));
    temporary.setAutoRemove(true);
    if (!temporary.open())
        return false;
    if (!data.writeTo(temporary) || !temporary.flush())
        return false;
    // A replacement keeps the permissions of what it replaces; a new file is readable by all,
    // as files made by the user's other programs are.
    const QFileDevice::Permissions permissions =
        target.exists() ? QFile::permissions(path)
                        : QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                              QFileDevice::ReadGroup | QFileDevice::ReadOther;
    temporary.setPermissions(permissions);
    temporary.close();
    if (std::rename(QFile::encodeName(temporary.fileName()).constData(),
                    QFile::encodeName(path).constData()) != 0)
        return false;
    temporary.setAutoRemove(false);
    return true;
}
