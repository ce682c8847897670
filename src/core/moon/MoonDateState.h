#pragma once

#include "core/moon/MoonCalc.h"

#include <QDateTime>

// Which date the Moon page describes. In live mode (no chosen date) the owner's timer keeps
// moving the date to the present moment; stepping to another day leaves live mode, and any
// command that lands on today returns to it. The present moment comes from the core's clock.
class MoonDateState {
public:
    MoonDateState();

    MoonCalc &moonCalc() { return _moonCalc; }
    const MoonCalc &moonCalc() const { return _moonCalc; }
    bool customDate() const { return _customDate; }
    bool southernHemisphere() const { return _shemisphere; }

    void setHemisphere(bool southern);

    // The five date commands.
    void setDateToToday();
    void setDateAddOneDay();
    void setDateSubtractOneDay();
    void setDateToNextFullMoon();
    void setDateToNextNewMoon();

    // A chosen date, unless it falls on today: then live mode (the present moment, not the date
    // given) takes over again.
    void checkSetDateToToday(const QDateTime &date);
    // The live-mode timer's tick. True when the date moved to the present moment.
    bool updateMoonDate();

    // Whether the date falls on the same calendar day (year and day of the year) as now, both
    // read in the date's own time zone.
    static bool isToday(const QDateTime &date, const QDateTime &now);
    static QDateTime presentMoment();

private:
    void stepDays(int days);

    MoonCalc _moonCalc;
    bool _customDate = false;
    bool _shemisphere = false;
};
