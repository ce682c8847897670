#include "core/now/NowDownload.h"

#include "core/net/AtomicFile.h"
#include "core/net/GzipData.h"
#include "core/now/NowFormat.h"

#include <QDateTime>
#include <QTimeZone>

namespace {

QString formatProblem(const QString &reason)
{
    return QStringLiteral("the file's format is not the one expected (%1)").arg(reason);
}

// No real data file comes near this; a body that unpacks to more is refused.
constexpr qint64 kMaximumUnpackedSize = qint64(256) * 1024 * 1024;

} // namespace

QByteArray NowDownload::acceptEncoding(const QString &kind)
{
    // Ordinary nodes take the bytes as they are: pictures are compressed already, and the
    // declared length then counts exactly what is written.
    return kind.isEmpty() ? QByteArrayLiteral("identity") : QByteArrayLiteral("gzip");
}

QString NowDownload::check(const QString &kind, const QByteArray &contentEncoding, AtomicFile &data)
{
    if (kind.isEmpty())
        return QString();
    QByteArray body = data.contents();
    // Bytes that could not be written are for commit() to report.
    if (body.isEmpty() && !data.isEmpty())
        return QString();
    const QByteArray encoding = contentEncoding.trimmed().toLower();
    if (encoding == "gzip" || encoding == "x-gzip") {
        std::optional<QByteArray> unpacked = GzipData::inflate(body, kMaximumUnpackedSize);
        if (!unpacked)
            return formatProblem(QStringLiteral("the compressed data is damaged or cut short"));
        body = std::move(*unpacked);
        data.clear();
        data.append(body);
    }
    std::optional<qint64> newest;
    const QString problem = NowFormat::shapeProblem(kind, body, &newest);
    if (!problem.isEmpty())
        return formatProblem(problem);
    // The data is as recent as its newest sample, whenever the server wrote the file.
    if (newest)
        data.setModificationTime(QDateTime::fromSecsSinceEpoch(*newest, QTimeZone::utc()));
    return QString();
}
