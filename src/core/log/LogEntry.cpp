#include "core/log/LogEntry.h"

#include "core/util/CalendarFormat.h"

QString LogEntry::timestamp(const QDateTime &when)
{
    return CalendarFormat::format(when, QStringLiteral("%Y/%m/%d %I:%M%p"));
}

QString LogEntry::text(const QDateTime &when, const QString &message)
{
    return QStringLiteral("[%1] %2").arg(timestamp(when), message);
}

QString LogEntry::separatorBefore(qsizetype existingLength)
{
    return existingLength > 0 ? QStringLiteral("\n") : QString();
}
