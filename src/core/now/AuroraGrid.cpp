#include "core/now/AuroraGrid.h"

#include <algorithm>
#include <cmath>

void AuroraGrid::setTimes(qint64 observation, qint64 forecast)
{
    _observationTime = observation;
    _forecastTime = forecast;
}

int AuroraGrid::index(int longitude, int latitude)
{
    if (longitude < 0 || longitude >= kLongitudes || latitude < -90 || latitude > 90)
        return -1;
    return longitude * kLatitudes + latitude + 90;
}

double AuroraGrid::value(int longitude, int latitude) const
{
    const int i = index(longitude, latitude);
    return i < 0 ? 0.0 : double(_values[size_t(i)]);
}

void AuroraGrid::setValue(int longitude, int latitude, double value)
{
    const int i = index(longitude, latitude);
    if (i >= 0)
        _values[size_t(i)] = float(value);
}

double AuroraGrid::highestValue() const
{
    return double(*std::max_element(_values.cbegin(), _values.cend()));
}

double AuroraGrid::valueNear(double latitude, double longitude) const
{
    if (!std::isfinite(latitude) || !std::isfinite(longitude))
        return 0.0;
    const double east = std::fmod(std::fmod(longitude, 360.0) + 360.0, 360.0);
    double best = 0.0;
    for (int lat = int(std::ceil(latitude - 1.0)); lat <= int(std::floor(latitude + 1.0)); ++lat) {
        // Every grid longitude within a degree, counted on from the one below: 359 and 0 for a
        // location at 359.6° E.
        for (int lon = int(std::ceil(east - 1.0)); lon <= int(std::floor(east + 1.0)); ++lon)
            best = std::max(best, value((lon + kLongitudes) % kLongitudes, lat));
    }
    return best;
}
