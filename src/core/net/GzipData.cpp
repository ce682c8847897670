#include "core/net/GzipData.h"

#include <zlib.h>

bool GzipData::isGzip(QByteArrayView bytes)
{
    return bytes.size() >= 2 && quint8(bytes[0]) == 0x1f && quint8(bytes[1]) == 0x8b;
}

std::optional<QByteArray> GzipData::inflate(QByteArrayView gzip, qint64 limit)
{
    z_stream stream{};
    // 16 + MAX_WBITS: a gzip wrapper, whose trailer (CRC-32 and length) zlib checks for us.
    if (inflateInit2(&stream, 16 + MAX_WBITS) != Z_OK)
        return std::nullopt;
    QByteArray out;
    out.resize(qsizetype(std::min<qint64>(limit, std::max<qint64>(gzip.size() * 8, 4096))));
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(gzip.data()));
    stream.avail_in = uInt(gzip.size());
    int result = Z_OK;
    for (;;) {
        if (qint64(stream.total_out) >= out.size()) {
            if (out.size() >= limit)
                break;
            out.resize(qsizetype(std::min<qint64>(limit, qint64(out.size()) * 2)));
        }
        stream.next_out = reinterpret_cast<Bytef *>(out.data()) + stream.total_out;
        stream.avail_out = uInt(out.size() - qsizetype(stream.total_out));
        result = ::inflate(&stream, Z_NO_FLUSH);
        // A body may hold several gzip members one after another.
        if (result == Z_STREAM_END && stream.avail_in >= 2 &&
            isGzip({reinterpret_cast<const char *>(stream.next_in), 2}))
            result = inflateReset(&stream);
        else if (result != Z_OK)
            break;
    }
    const bool complete = result == Z_STREAM_END && stream.avail_in == 0;
    out.resize(qsizetype(stream.total_out));
    inflateEnd(&stream);
    if (!complete)
        return std::nullopt;
    return out;
}
