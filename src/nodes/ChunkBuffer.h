#pragma once

#include <QByteArray>
#include <QList>

class QIODevice;

// The bytes of a transfer as they arrived, kept as the chunks the network delivered. Appending
// never copies what is already held, so a large transfer costs its own size in memory and no
// pause while a contiguous buffer is moved to a bigger home.
class ChunkBuffer {
public:
    void append(const QByteArray &chunk);
    void clear();
    qint64 size() const { return _size; }
    bool isEmpty() const { return _size == 0; }
    // Writes every chunk in order; false as soon as the device takes less than it was given.
    bool writeTo(QIODevice &device) const;
    // One contiguous copy, for callers that need it (small data only).
    QByteArray toByteArray() const;

private:
    QList<QByteArray> _chunks;
    qint64 _size = 0;
};
