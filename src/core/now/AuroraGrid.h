#pragma once

#include <QtGlobal>

#include <vector>

// The provider's aurora forecast ("ovation"): for every whole degree of longitude (0 to 359,
// east) and latitude (−90 to 90), a value from 0 to 100, the chance of seeing an aurora overhead
// in percent, as forecast for a moment about half an hour after the observation it comes from.
class AuroraGrid {
public:
    static constexpr int kLongitudes = 360;
    static constexpr int kLatitudes = 181;
    static constexpr int kPoints = kLongitudes * kLatitudes;

    qint64 observationTime() const { return _observationTime; }
    qint64 forecastTime() const { return _forecastTime; }
    void setTimes(qint64 observation, qint64 forecast);

    // Whole degrees; outside the grid, 0 and nothing is set.
    double value(int longitude, int latitude) const;
    void setValue(int longitude, int latitude, double value);
    double highestValue() const;

    // The highest value of the points within 1° of the location, in latitude and in longitude
    // alike (degrees north and east; a longitude west may be given as negative). Longitudes wrap:
    // 359.6° E, or −0.4°, is next to 0°.
    double valueNear(double latitude, double longitude) const;

private:
    static int index(int longitude, int latitude);

    qint64 _observationTime = 0;
    qint64 _forecastTime = 0;
    std::vector<float> _values = std::vector<float>(kPoints, 0.0f);
};
