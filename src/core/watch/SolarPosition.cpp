#include "core/watch/SolarPosition.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double kJulianDateOf1970 = 2440587.5;
constexpr double kJ2000 = 2451545.0;

double rad(double degrees)
{
    return degrees * std::numbers::pi / 180.0;
}

double deg(double radians)
{
    return radians * 180.0 / std::numbers::pi;
}

double fixAngle(double degrees)
{
    return degrees - 360.0 * std::floor(degrees / 360.0);
}

// The moment in [from, to] (seconds) at which the Sun crosses the darkness line, one side at
// `from` and the other at `to`: halved down to a second.
qint64 crossing(qint64 from, qint64 to, double latitude, double longitude)
{
    const bool darkAtFrom = SolarPosition::isDark(from, latitude, longitude);
    while (to - from > 1) {
        const qint64 middle = from + (to - from) / 2;
        if (SolarPosition::isDark(middle, latitude, longitude) == darkAtFrom)
            from = middle;
        else
            to = middle;
    }
    return to;
}

} // namespace

double SolarPosition::julianDate(qint64 time)
{
    return double(time) / 86400.0 + kJulianDateOf1970;
}

SolarPosition::Equatorial SolarPosition::sun(qint64 time)
{
    // Julian centuries since J2000. Universal time stands in for dynamical time: the minute
    // between them moves the Sun by 0.001°.
    const double t = (julianDate(time) - kJ2000) / 36525.0;
    const double meanLongitude = 280.46646 + t * (36000.76983 + t * 0.0003032);
    const double meanAnomaly = rad(357.52911 + t * (35999.05029 - t * 0.0001537));
    const double centre = (1.914602 - t * (0.004817 + t * 0.000014)) * std::sin(meanAnomaly) +
                          (0.019993 - t * 0.000101) * std::sin(2.0 * meanAnomaly) +
                          0.000289 * std::sin(3.0 * meanAnomaly);
    // Nutation and aberration, to the apparent longitude and the true obliquity.
    const double node = rad(125.04 - 1934.136 * t);
    const double longitude = rad(meanLongitude + centre - 0.00569 - 0.00478 * std::sin(node));
    const double meanObliquity =
        23.0 + (26.0 + (21.448 - t * (46.8150 + t * (0.00059 - t * 0.001813))) / 60.0) / 60.0;
    const double obliquity = rad(meanObliquity + 0.00256 * std::cos(node));
    Equatorial position;
    position.rightAscension =
        fixAngle(deg(std::atan2(std::cos(obliquity) * std::sin(longitude), std::cos(longitude))));
    position.declination = deg(std::asin(std::sin(obliquity) * std::sin(longitude)));
    return position;
}

double SolarPosition::siderealTime(qint64 time)
{
    const double days = julianDate(time) - kJ2000;
    const double t = days / 36525.0;
    return fixAngle(280.46061837 + 360.98564736629 * days + t * t * (0.000387933 - t / 38710000.0));
}

double SolarPosition::altitude(const Equatorial &position, qint64 time, double latitude,
                               double longitude)
{
    const double hourAngle = rad(siderealTime(time) + longitude - position.rightAscension);
    const double phi = rad(latitude);
    const double delta = rad(position.declination);
    return deg(std::asin(std::sin(phi) * std::sin(delta) +
                         std::cos(phi) * std::cos(delta) * std::cos(hourAngle)));
}

double SolarPosition::sunAltitude(qint64 time, double latitude, double longitude)
{
    return altitude(sun(time), time, latitude, longitude);
}

bool SolarPosition::isDark(qint64 time, double latitude, double longitude)
{
    return sunAltitude(time, latitude, longitude) <= kDarkAltitude;
}

std::optional<qint64> SolarPosition::darknessBegins(qint64 now, double latitude, double longitude)
{
    // Ten-minute steps find the crossing; a dip below the line shorter than that (near the
    // latitude where the Sun only just reaches it) is no night to speak of.
    constexpr qint64 step = 600;
    constexpr qint64 day = 86400;
    if (isDark(now, latitude, longitude)) {
        for (qint64 t = now - step; t >= now - day; t -= step) {
            if (!isDark(t, latitude, longitude))
                return crossing(t, t + step, latitude, longitude);
        }
        return std::nullopt;
    }
    for (qint64 t = now + step; t <= now + day; t += step) {
        if (isDark(t, latitude, longitude))
            return crossing(t - step, t, latitude, longitude);
    }
    return std::nullopt;
}
