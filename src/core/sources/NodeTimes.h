#pragma once

#include <QDateTime>
#include <QString>

class Node;

// The times an item shows, and what they say about it. "Last Updated" is the last attempt to
// download, which the schedule counts from; the data time is when the data itself was made, which
// is what a reader needs to know: a picture whose downloads have failed for a day must not look
// current. Data is stale when it is older than twice the item's update interval, or older than a
// day for an item that is not updated automatically.
//
// Times are shown in the zone the user chose (DisplayTime); ages are measured against the core's
// clock.
class NodeTimes {
public:
    // "Last Updated: Monday, Nov 16 2026 at 05:57 PM, Next Update: 11/16 at 06:57 PM" (the next
    // update only while the item updates automatically), "Last Updated: Unknown" before the
    // first attempt.
    static QString updateLine(const Node &node);

    // "Data from 07:51 UTC, 2 h 10 min ago": the time of day alone for today, with the date
    // ("Nov 14 07:51 UTC") for another day and the year for another year. Empty without data.
    static QString dataLine(const QDateTime &dataTime, const QDateTime &now);
    static QString dataLine(const Node &node, const QDateTime &now);

    // An age in words: "less than a minute", "12 min", "2 h 10 min", "3 h", "1 day 4 h",
    // "5 days". Whole minutes, rounded down; a negative age (a clock that is behind) is none.
    static QString ageText(qint64 seconds);

    // How old data may grow before it is stale.
    static qint64 staleAfterSeconds(bool autoUpdates, int intervalMinutes);
    static bool isStale(const QDateTime &dataTime, const QDateTime &now, bool autoUpdates,
                        int intervalMinutes);
    static bool isStale(const Node &node, const QDateTime &now);
    // Why the data is stale, for a tooltip: "Stale: the data is from Nov 14 07:51 UTC, 2 days
    // ago, older than twice its update interval (30 min)."; empty when it is not stale.
    static QString staleReason(const QDateTime &dataTime, const QDateTime &now, bool autoUpdates,
                               int intervalMinutes);
    static QString staleReason(const Node &node, const QDateTime &now);

    // The outline's status for an item with stale data that has nothing more pressing to say.
    static QString staleMark() { return QStringLiteral("Old"); }
};
