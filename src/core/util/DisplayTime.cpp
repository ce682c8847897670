#include "core/util/DisplayTime.h"

#include "core/util/CalendarFormat.h"

namespace {

bool &utcChosen()
{
    static bool utc = false;
    return utc;
}

} // namespace

bool DisplayTime::utc()
{
    return utcChosen();
}

void DisplayTime::setUtc(bool on)
{
    utcChosen() = on;
}

QDateTime DisplayTime::shown(const QDateTime &when)
{
    return utc() ? when.toUTC() : when.toLocalTime();
}

QString DisplayTime::format(const QDateTime &when, const QString &pattern)
{
    return CalendarFormat::format(shown(when), pattern) + zoneSuffix();
}

QString DisplayTime::zoneSuffix()
{
    return utc() ? QStringLiteral(" UTC") : QString();
}
