#pragma once

#include <QString>

class ChunkBuffer;

// Replaces a data file in one step: anyone reading it sees the old file or the new one, never
// part of either, also when the process is killed in the middle. The data is written to a
// temporary file beside the target ("name.XXXXXX"), which is then renamed over it.
//
// The data is not forced to the disk before the rename. A data file is a cache of something the
// network can give again; waiting for the disk on every download stalled the event loop for
// tens of milliseconds per file, up to a second on a busy disk, and would buy only survival of a
// power cut.
class AtomicFile {
public:
    static bool write(const QString &path, const ChunkBuffer &data);
};
