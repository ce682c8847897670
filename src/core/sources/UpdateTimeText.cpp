#include "core/sources/UpdateTimeText.h"

#include "core/util/CalendarFormat.h"
#include "core/util/DisplayTime.h"

#include <QRegularExpression>

namespace {

const QString kLongLastUpdate = QStringLiteral("%A, %b %d %Y at %I:%M %p");
const QString kLongNextUpdate = QStringLiteral("%m/%d at %I:%M %p");

} // namespace

QString UpdateTimeText::longLastUpdate(const QDateTime &when)
{
    return CalendarFormat::format(when, kLongLastUpdate);
}

QString UpdateTimeText::longNextUpdate(const QDateTime &when)
{
    return CalendarFormat::format(when, kLongNextUpdate);
}

QString UpdateTimeText::shownLongLastUpdate(const QDateTime &when)
{
    return DisplayTime::format(when, kLongLastUpdate);
}

QString UpdateTimeText::shownLongNextUpdate(const QDateTime &when)
{
    return DisplayTime::format(when, kLongNextUpdate);
}

QString UpdateTimeText::shortForm(const QDateTime &when)
{
    return CalendarFormat::format(when, QStringLiteral("%m/%d @ %I:%M%p"));
}

QDateTime UpdateTimeText::parseLongLastUpdate(const QString &text)
{
    // The day name is not checked against the date: the date fields decide, as they would for a
    // person reading the line.
    static const QRegularExpression pattern(QStringLiteral(
        "^\\s*([A-Za-z]+),\\s+([A-Za-z]+)\\s+(\\d{1,2})\\s+(\\d{1,4})\\s+at\\s+(\\d{1,2}):(\\d{2})"
        "\\s*([AaPp][Mm])\\s*$"));
    if (text.size() > 200)
        return QDateTime();
    const QRegularExpressionMatch m = pattern.match(text);
    if (!m.hasMatch())
        return QDateTime();

    const int month = CalendarFormat::monthFromEnglishName(m.captured(2));
    const int day = m.captured(3).toInt();
    const int year = m.captured(4).toInt();
    int hour = m.captured(5).toInt();
    const int minute = m.captured(6).toInt();
    const bool pm = m.captured(7).compare(QLatin1String("PM"), Qt::CaseInsensitive) == 0;

    if (month == 0 || hour < 1 || hour > 12 || minute > 59)
        return QDateTime();
    hour = hour % 12 + (pm ? 12 : 0);

    const QDate date(year, month, day);
    if (!date.isValid())
        return QDateTime();
    const QDateTime result(date, QTime(hour, minute));
    return result.isValid() ? result : QDateTime();
}
