#pragma once

#include <QDateTime>
#include <QString>

// strftime-style formatting of calendar dates with English day and month names, whatever the
// user's locale: the texts it produces are stored in the settings and parsed back, so they must
// not depend on the language the desktop happens to run in.
//
// Supported conversions: %A %a %B %b %d %e %H %I %j %M %m %p %S %Y %y %Z %z %%. Any other
// conversion is copied through unchanged.
class CalendarFormat {
public:
    static QString format(const QDateTime &dateTime, const QString &pattern);

    static QString englishMonthName(int month, bool abbreviated);
    static QString englishDayName(int dayOfWeek, bool abbreviated);
    // 1 to 12 for an English month name or its three-letter abbreviation (any case), else 0.
    static int monthFromEnglishName(const QString &name);
};
