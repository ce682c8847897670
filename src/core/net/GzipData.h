#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

// Unpacks a body sent with "Content-Encoding: gzip". We ask for compressed JSON ourselves and
// unpack it here instead of letting Qt do it: Qt's own unpacking drops the declared length, so a
// transfer cut short would go unnoticed, whereas this way the length check counts the bytes that
// came over the wire, and the gzip trailer's checksum and length vouch for the rest.
class GzipData {
public:
    static bool isGzip(QByteArrayView bytes);
    // The unpacked bytes; none when the data is damaged, cut short, or would unpack to more than
    // the limit (a small body must not be able to fill memory).
    static std::optional<QByteArray> inflate(QByteArrayView gzip, qint64 limit);
};
