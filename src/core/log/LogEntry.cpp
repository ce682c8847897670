#include "core/log/LogEntry.h"

#include "core/util/CalendarFormat.h"

QString LogEntry::timestamp(const QDateTime &when)
{
    const QString stamp = CalendarFormat::format(when, QStringLiteral("%Y/%m/%d %I:%M%p"));
    return when.timeSpec() == Qt::UTC ? stamp + QStringLiteral(" UTC") : stamp;
}

QString LogEntry::text(const QDateTime &when, const QString &message)
{
    return QStringLiteral("[%1] %2").arg(timestamp(when), message);
}

QString LogEntry::separatorBefore(qsizetype existingLength)
{
    return existingLength > 0 ? QStringLiteral("\n") : QString();
}
