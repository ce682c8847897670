#pragma once

#include <QDateTime>
#include <QString>

// The texts in which a node's last and next update times are shown and stored. They always use
// English names so that the stored text reads back under any locale.
class UpdateTimeText {
public:
    // "%A, %b %d %Y at %I:%M %p": Monday, Nov 16 2026 at 05:57 PM. This is the stored form.
    static QString longLastUpdate(const QDateTime &when);
    // "%m/%d at %I:%M %p": 11/16 at 05:57 PM.
    static QString longNextUpdate(const QDateTime &when);
    // "%m/%d @ %I:%M%p": 11/16 @ 05:57PM.
    static QString shortForm(const QDateTime &when);

    // The long forms as the window shows them: in the zone the user chose (DisplayTime), marked
    // " UTC" in UTC. In local time they read exactly as the stored forms.
    static QString shownLongLastUpdate(const QDateTime &when);
    static QString shownLongNextUpdate(const QDateTime &when);

    // Reads a text in the long last-update form back as a local date and time with minute
    // precision. Returns an invalid date for anything else; never throws or crashes.
    static QDateTime parseLongLastUpdate(const QString &text);
};
