#include "core/sources/NodeTimes.h"

#include "core/sources/Node.h"
#include "core/sources/UpdateTimeText.h"
#include "core/util/DisplayTime.h"

namespace {

constexpr qint64 kMinute = 60;
constexpr qint64 kHour = 60 * kMinute;
constexpr qint64 kDay = 24 * kHour;

QString count(qint64 n, const char *unit, const char *units)
{
    return QString::number(n) + QLatin1Char(' ') + QLatin1String(n == 1 ? unit : units);
}

// The data's time, with as much of the date as it takes to tell it from today's.
QString shownDataTime(const QDateTime &dataTime, const QDateTime &now)
{
    const QDate day = DisplayTime::shown(dataTime).date();
    const QDate today = DisplayTime::shown(now).date();
    if (day == today)
        return DisplayTime::format(dataTime, QStringLiteral("%H:%M"));
    if (day.year() == today.year())
        return DisplayTime::format(dataTime, QStringLiteral("%b %d %H:%M"));
    return DisplayTime::format(dataTime, QStringLiteral("%b %d %Y %H:%M"));
}

} // namespace

QString NodeTimes::updateLine(const Node &node)
{
    const QString last = node.hasLastUpdate()
                             ? UpdateTimeText::shownLongLastUpdate(node.lastUpdateDate())
                             : node.lastUpdate();
    if (!node.autoUpdates())
        return QStringLiteral("Last Updated: %1").arg(last);
    return QStringLiteral("Last Updated: %1, Next Update: %2")
        .arg(last, UpdateTimeText::shownLongNextUpdate(node.nextUpdateDate()));
}

QString NodeTimes::ageText(qint64 seconds)
{
    if (seconds < kMinute)
        return QStringLiteral("less than a minute");
    if (seconds < kHour)
        return QStringLiteral("%1 min").arg(seconds / kMinute);
    if (seconds < kDay) {
        const qint64 minutes = seconds % kHour / kMinute;
        return QStringLiteral("%1 h").arg(seconds / kHour) +
               (minutes ? QStringLiteral(" %1 min").arg(minutes) : QString());
    }
    const qint64 hours = seconds % kDay / kHour;
    return count(seconds / kDay, "day", "days") +
           (hours ? QStringLiteral(" %1 h").arg(hours) : QString());
}

QString NodeTimes::dataLine(const QDateTime &dataTime, const QDateTime &now)
{
    if (!dataTime.isValid())
        return QString();
    const qint64 age = dataTime.secsTo(now);
    return QStringLiteral("Data from %1, %2")
        .arg(shownDataTime(dataTime, now),
             age < kMinute ? QStringLiteral("just now") : ageText(age) + QStringLiteral(" ago"));
}

QString NodeTimes::dataLine(const Node &node, const QDateTime &now)
{
    return dataLine(node.dataTime(), now);
}

qint64 NodeTimes::staleAfterSeconds(bool autoUpdates, int intervalMinutes)
{
    return autoUpdates ? 2 * qint64(intervalMinutes) * kMinute : kDay;
}

bool NodeTimes::isStale(const QDateTime &dataTime, const QDateTime &now, bool autoUpdates,
                        int intervalMinutes)
{
    return dataTime.isValid() &&
           dataTime.secsTo(now) > staleAfterSeconds(autoUpdates, intervalMinutes);
}

bool NodeTimes::isStale(const Node &node, const QDateTime &now)
{
    return isStale(node.dataTime(), now, node.autoUpdates(), node.nextUpdateInMinutes());
}

QString NodeTimes::staleReason(const QDateTime &dataTime, const QDateTime &now, bool autoUpdates,
                               int intervalMinutes)
{
    if (!isStale(dataTime, now, autoUpdates, intervalMinutes))
        return QString();
    const QString limit =
        autoUpdates ? QStringLiteral("older than twice its update interval (%1)")
                          .arg(ageText(qint64(intervalMinutes) * kMinute))
                    : QStringLiteral("older than a day, and it is not updated automatically");
    return QStringLiteral("Stale: the data is from %1, %2 ago, %3.")
        .arg(shownDataTime(dataTime, now), ageText(dataTime.secsTo(now)), limit);
}

QString NodeTimes::staleReason(const Node &node, const QDateTime &now)
{
    return staleReason(node.dataTime(), now, node.autoUpdates(), node.nextUpdateInMinutes());
}
