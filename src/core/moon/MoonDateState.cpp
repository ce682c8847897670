#include "core/moon/MoonDateState.h"

#include "core/util/Clock.h"

MoonDateState::MoonDateState() = default;

QDateTime MoonDateState::presentMoment()
{
    return Clock::now().toTimeZone(MoonCalc::defaultTimeZone());
}

void MoonDateState::setHemisphere(bool southern)
{
    _shemisphere = southern;
    _moonCalc.setDisplayForSouthernHemisphere(southern);
}

void MoonDateState::setDateToToday()
{
    _customDate = false;
    _moonCalc.setDate(presentMoment());
}

void MoonDateState::setDateAddOneDay()
{
    stepDays(1);
}

void MoonDateState::setDateSubtractOneDay()
{
    stepDays(-1);
}

// A stepped date starts at midnight. Day 0 and the day after the month's last are counted on
// from the first of the month, which carries the step across month and year ends.
void MoonDateState::stepDays(int days)
{
    const QDate shown = _moonCalc.date().date();
    checkSetDateToToday(MoonCalc::dateWithYear(shown.year(), shown.month(), shown.day() + days, 0,
                                               0, 0, MoonCalc::defaultTimeZone()));
}

void MoonDateState::setDateToNextFullMoon()
{
    checkSetDateToToday(_moonCalc.nextFullMoon());
}

void MoonDateState::setDateToNextNewMoon()
{
    checkSetDateToToday(_moonCalc.upcomingNewMoon());
}

void MoonDateState::checkSetDateToToday(const QDateTime &date)
{
    if (!isToday(date, Clock::now())) {
        _customDate = true;
        _moonCalc.setDate(date);
    } else if (_customDate) {
        setDateToToday();
    }
}

bool MoonDateState::updateMoonDate()
{
    if (_customDate)
        return false;
    setDateToToday();
    return true;
}

// The year counts as well as the day of the year: a date a whole year away is not today.
bool MoonDateState::isToday(const QDateTime &date, const QDateTime &now)
{
    const QDate day = date.date();
    const QDate today = now.toTimeZone(date.timeZone()).date();
    return day.year() == today.year() && day.dayOfYear() == today.dayOfYear();
}
