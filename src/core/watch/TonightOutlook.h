#pragma once

#include <QDateTime>
#include <QString>

class AuroraGrid;
class NotificationSettings;

// The Now view's line about the coming night at the home location: the aurora forecast there,
// when the sky gets dark, and how much of the Moon will brighten it.
class TonightOutlook {
public:
    // "Tonight at home: aurora 14, dark from 17:32 UTC, Moon 45 % lit". Without a forecast, the
    // aurora is "unknown"; a polar day or night says "no darkness tonight" or "dark all day".
    // Empty while no home location is set.
    static QString line(const AuroraGrid *aurora, const NotificationSettings &settings,
                        const QDateTime &now);
};
