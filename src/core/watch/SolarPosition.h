#pragma once

#include <QtGlobal>

#include <optional>

// Where the Sun stands, from the standard low-precision formulas for its apparent position
// (good to about 0.01° in this century, far inside what "is it dark yet" needs), and when the sky
// gets dark at a place: the aurora rule only fires while the Sun is at least 12° below the
// horizon, where the sky is dark enough for a faint aurora to show.
//
// Times are seconds since 1970 in UTC; angles are degrees; longitudes are east (west negative).
class SolarPosition {
public:
    struct Equatorial {
        double rightAscension = 0.0; // 0 to 360
        double declination = 0.0;
    };

    static double julianDate(qint64 time);
    // The Sun's apparent right ascension and declination.
    static Equatorial sun(qint64 time);
    // The mean sidereal time at Greenwich, 0 to 360.
    static double siderealTime(qint64 time);
    // The altitude above the horizon of a body at the position, seen from the place.
    static double altitude(const Equatorial &position, qint64 time, double latitude,
                           double longitude);
    static double sunAltitude(qint64 time, double latitude, double longitude);

    static bool isDark(qint64 time, double latitude, double longitude);
    // When the darkness of tonight begins: the moment the Sun sinks 12° below the horizon, within
    // the next 24 hours; if it is dark already, the moment it did, within the last 24 hours. None
    // when the Sun stays on one side of that line the whole time (a polar day or night).
    static std::optional<qint64> darknessBegins(qint64 now, double latitude, double longitude);

    static constexpr double kDarkAltitude = -12.0;
};
