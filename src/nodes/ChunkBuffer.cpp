#include "ChunkBuffer.h"

#include <QIODevice>

void ChunkBuffer::append(const QByteArray &chunk)
{
    if (chunk.isEmpty())
        return;
    _chunks.append(chunk);
    _size += chunk.size();
}

void ChunkBuffer::clear()
{
    _chunks.clear();
    _size = 0;
}

bool ChunkBuffer::writeTo(QIODevice &device) const
{
    for (const QByteArray &chunk : _chunks) {
        if (device.write(chunk) != chunk.size())
            return false;
    }
    return true;
}

QByteArray ChunkBuffer::toByteArray() const
{
    QByteArray all;
    all.reserve(_size);
    for (const QByteArray &chunk : _chunks)
        all.append(chunk);
    return all;
}
