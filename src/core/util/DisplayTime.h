#pragma once

#include <QDateTime>
#include <QString>

// The one place that decides in which zone the window shows times: UTC (what space-weather
// forecasters and their products use) or the computer's local time. Every time the window shows
// goes through here, so one choice (View > Show Times in UTC) changes them all. Only what is
// shown follows it: the texts stored in the settings keep their own fixed form.
//
// A process starts with local time; the window applies the user's choice. The terminal tools
// never do, so their output does not change with the window's menu.
class DisplayTime {
public:
    static bool utc();
    static void setUtc(bool on);

    // The same moment in the zone shown.
    static QDateTime shown(const QDateTime &when);
    // The moment in the zone shown, with the pattern's strftime conversions (CalendarFormat),
    // followed by " UTC" when that is the zone, so that a reader can always tell which it is.
    static QString format(const QDateTime &when, const QString &pattern);
    // What follows a time shown in UTC: " UTC"; nothing for local time.
    static QString zoneSuffix();
};
