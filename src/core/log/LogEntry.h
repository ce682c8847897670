#pragma once

#include <QDateTime>
#include <QString>

// The text of one activity-log line. The log window and the terminal tools both build their lines
// here, so a line printed by a headless fetch reads exactly like the one the window shows.
class LogEntry {
public:
    enum class Kind { Message, Error };

    // "%Y/%m/%d %I:%M%p", e.g. 2006/03/14 09:05PM, in the time's own zone; a time in UTC is
    // marked so: 2006/03/14 09:05PM UTC.
    static QString timestamp(const QDateTime &when);
    // "[timestamp] message", the message exactly as given.
    static QString text(const QDateTime &when, const QString &message);
    // Entries are separated by one line feed, placed before an entry whenever text precedes it.
    static QString separatorBefore(qsizetype existingLength);
};
