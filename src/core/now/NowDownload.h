#pragma once

#include <QByteArray>
#include <QString>

class AtomicFile;

// What a node with a "DataKind" does differently in its transfer: it asks for the file
// compressed (the one-minute solar wind is 2.7 MB plain, under 100 KB with gzip) and, before the
// body may replace the last good file, unpacks it and holds it against its kind's shape.
class NowDownload {
public:
    // The Accept-Encoding header for a node of this kind ("" for an ordinary node).
    static QByteArray acceptEncoding(const QString &kind);
    // Readies a finished body for its atomic write: unpacks it in place when it came with
    // gzip, then checks its shape, and dates the file by its newest sample. Empty when it may be
    // written (always, for an ordinary node), otherwise the failure as the log words it after
    // "Download of "NAME" Failed: ".
    static QString check(const QString &kind, const QByteArray &contentEncoding, AtomicFile &data);
};
