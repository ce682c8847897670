#include "core/moon/MoonCalc.h"

#include "core/util/Clock.h"

#include <QtGlobal>

#include <cmath>

namespace {

// Epoch of the Moon and Sun positions: 1980 January 0.0 (1979 December 31 00:00 UT).
constexpr double kEpoch1980 = 2444238.5;
// Lunation 0 of the phase instants: the new moon of 1900 January 1, about 06:13 UT.
constexpr double kLunationBase = 2415020.75933;

// Sun: ecliptic longitude at the epoch, of perigee, and eccentricity of the Earth's orbit.
constexpr double kSunLongitudeAtEpoch = 278.83354;
constexpr double kSunPerigeeLongitude = 282.596403;
constexpr double kEarthEccentricity = 0.016718;
constexpr double kSunSemiMajorAxisKm = 149598500.0;
constexpr double kSunAngularSizeAtAxis = 0.533128;

// Moon: mean longitude and longitude of perigee at the epoch, eccentricity, distance and size.
constexpr double kMoonMeanLongitudeAtEpoch = 64.975464;
constexpr double kMoonPerigeeLongitudeAtEpoch = 349.383063;
constexpr double kMoonEccentricity = 0.0549;
constexpr double kMoonSemiMajorAxisKm = 384401.0;
constexpr double kMoonAngularSizeAtAxis = 0.5181;

constexpr double kMilesPerKilometre = 0.62;

double rad(double degrees)
{
    return degrees * 0.017453292519943295;
}

double deg(double radians)
{
    return radians * 57.29577951308232;
}

double fixangle(double a)
{
    return a - 360.0 * std::floor(a / 360.0);
}

double sinDeg(double degrees)
{
    return std::sin(rad(degrees));
}

double cosDeg(double degrees)
{
    return std::cos(rad(degrees));
}

// The time-dependent part shared by the mean phase and the uncorrected true phase.
double meanPhaseTerms(double k, double t)
{
    const double t2 = t * t;
    const double t3 = t2 * t;
    return kLunationBase + MoonCalc::kSynodicMonth * k + 0.0001178 * t2 - 0.000000155 * t3 +
           0.00033 * sinDeg(166.56 + 132.87 * t - 0.009173 * t2);
}

} // namespace

MoonCalc::MoonCalc()
{
    setup();
    setDate(Clock::now().toTimeZone(defaultTimeZone()));
}

void MoonCalc::setup()
{
    _phased = 0.0;
    _phasei = 0;
    _namedPhasei = 0;
    _previousphases.fill(0.0);
    _currentphases.fill(0.0);
    _nextphases.fill(0.0);
    _illum = 0.0;
    _age_p = 0;
    _age_j = 0.0;
    _age_d = 0;
    _age_h = 0;
    _age_m = 0;
    _dist = 0.0;
    _diam = 0.0;
    _soldist = 0.0;
    _soldiam = 0.0;
    _southernHemi = false;
}

void MoonCalc::setDate(const QDateTime &date)
{
    _date = date;
    _dateGMT = dateAtGMT(date);
    update();
}

void MoonCalc::setDisplayForSouthernHemisphere(bool southern)
{
    _southernHemi = southern;
    update();
}

void MoonCalc::update()
{
    _jdate = julianDateForDate(_date);
    _jdateGMT = julianDateForDate(_dateGMT);
    getMoonInfo();

    // The current lunation is searched from the local clock. The lunation before it is simply
    // the preceding lunation number: searching again from the current new moon's date would find
    // the current lunation once more whenever the true new moon falls after the mean one, and
    // the "last" phases would then lie after the date.
    const double k = findLunation(_date, _currentphases);
    fillPhases(k - 1.0, _previousphases);

    getMoonPhaseArrayForDate(calendarDateForJulianDate(_currentphases[5]), _nextphases);
}

// --- Derived accessors ----------------------------------------------------------------------

double MoonCalc::moonDistanceMiles() const
{
    return kMilesPerKilometre * _dist;
}

double MoonCalc::solDistanceMiles() const
{
    return kMilesPerKilometre * _soldist;
}

bool MoonCalc::isBlueMoon() const
{
    // The last full moon is never more than a lunation back, so the same month number means the
    // same calendar month; the years need no comparison.
    return _phasei == 4 && lastFullMoon().date().month() == _date.date().month();
}

QDateTime MoonCalc::localDateForJulianDate(double jd)
{
    return dateFromGMT(calendarDateForJulianDate(jd));
}

// Both sides of the comparison are on the universal-time scale: the phase instants are universal
// time, and so is _jdateGMT. Comparing against the local-clock Julian date would, west of
// Greenwich, hand back the very phase the date was set to as the "next" one.
QDateTime MoonCalc::lastPhase(int slot) const
{
    const double instant = std::floor(_currentphases[slot]) < std::floor(_jdateGMT)
                               ? _currentphases[slot]
                               : _previousphases[slot];
    return localDateForJulianDate(instant);
}

QDateTime MoonCalc::nextPhase(int slot) const
{
    const double instant = std::floor(_currentphases[slot]) > std::floor(_jdateGMT)
                               ? _currentphases[slot]
                               : _nextphases[slot];
    return localDateForJulianDate(instant);
}

QDateTime MoonCalc::lastNewMoon() const
{
    return lastPhase(0);
}

QDateTime MoonCalc::lastFirstQuarter() const
{
    return lastPhase(1);
}

QDateTime MoonCalc::lastFullMoon() const
{
    return lastPhase(2);
}

QDateTime MoonCalc::lastLastQuarter() const
{
    return lastPhase(3);
}

QDateTime MoonCalc::currentNewMoon() const
{
    return localDateForJulianDate(_currentphases[0]);
}

QDateTime MoonCalc::currentFirstQuarter() const
{
    return localDateForJulianDate(_currentphases[1]);
}

QDateTime MoonCalc::currentFullMoon() const
{
    return localDateForJulianDate(_currentphases[2]);
}

QDateTime MoonCalc::currentLastQuarter() const
{
    return localDateForJulianDate(_currentphases[3]);
}

QDateTime MoonCalc::nextNewMoon() const
{
    return nextPhase(0);
}

QDateTime MoonCalc::nextFirstQuarter() const
{
    return nextPhase(1);
}

QDateTime MoonCalc::nextFullMoon() const
{
    return nextPhase(2);
}

QDateTime MoonCalc::nextLastQuarter() const
{
    return nextPhase(3);
}

QDateTime MoonCalc::upcomingNewMoon() const
{
    const QDateTime next = nextNewMoon();
    // The phases are whole seconds and the date may carry milliseconds; compare what is shown.
    if (next.toSecsSinceEpoch() > _date.toSecsSinceEpoch())
        return next;
    return localDateForJulianDate(_nextphases[4]);
}

// --- Calendar -------------------------------------------------------------------------------

QTimeZone MoonCalc::defaultTimeZone()
{
    return QTimeZone::systemTimeZone();
}

QDateTime MoonCalc::dateWithYear(int year, int month, int day, int hour, int minute, int second,
                                 const QTimeZone &timeZone)
{
    const QDate date = QDate(year, month, 1).addDays(day - 1);
    return QDateTime(date, QTime(hour, minute, second), timeZone);
}

// Integer day-number arithmetic; every division truncates toward zero. The intermediate products
// are 64-bit so that no year, however far off, overflows.
double MoonCalc::julianDateForDate(const QDateTime &date)
{
    const QDate day = date.date();
    const QTime time = date.time();
    qint64 y = day.year();
    qint64 m = day.month();
    const qint64 d = day.day();
    const qint64 h = time.hour();
    const qint64 mi = time.minute();
    const qint64 s = time.second();

    // January and February count as months 10 and 11 of the year before.
    if (m > 2) {
        m -= 3;
    } else {
        m += 9;
        y -= 1;
    }
    const qint64 c = y / 100;
    const qint64 a = y - 100 * c;
    const qint64 j = d + (146097 * c) / 4 + (1461 * a) / 4 + (153 * m + 2) / 5 + 1721119;
    return double(j) - 0.5 + double((h * 60 + mi) * 60 + s) / 86400.0;
}

QDateTime MoonCalc::calendarDateForJulianDate(double jd)
{
    const double j1 = jd + 0.5;
    const double z = std::floor(j1);
    const double a = (z - 1721119.0) * 4.0;
    const double c = std::floor((a - 1.0) / 146097.0);
    const double x = std::floor((a - (146097.0 * c + 1.0)) * 0.25) * 4.0 + 3.0;
    const double y = std::floor(x / 1461.0);
    const double g = std::floor((x - 1461.0 * y + 4.0) * 0.25) * 5.0;
    const double mo = std::floor((g - 3.0) / 153.0);
    const double day = std::floor((g - (153.0 * mo + 3.0) + 5.0) / 5.0);
    double year = 100.0 * c + y;
    double month = 0.0;
    if (mo < 10.0) {
        month = mo + 3.0;
    } else {
        month = mo - 9.0;
        year += 1.0;
    }
    const int secs = int((j1 - z) * 86400.0);
    const int hour = secs / 3600;
    const int minute = (secs / 60) % 60;
    const int second = secs % 60;
    // The fields are read straight from the Julian date: no time-zone shift is applied here.
    return dateWithYear(int(year), int(month), int(day), hour, minute, second, defaultTimeZone());
}

// The shift is the zone's offset now, not the one in force at the date converted, so a date on
// the other side of a daylight-saving change is off by the difference. That keeps the two
// conversions exact inverses of each other.
QDateTime MoonCalc::dateAtGMT(const QDateTime &date)
{
    const int offset = defaultTimeZone().offsetFromUtc(Clock::now());
    return date.addSecs(-offset);
}

QDateTime MoonCalc::dateFromGMT(const QDateTime &date)
{
    const int offset = defaultTimeZone().offsetFromUtc(Clock::now());
    return date.addSecs(offset);
}

// --- Moon and Sun -----------------------------------------------------------------------------

double MoonCalc::kepler(double m, double ecc)
{
    // The iteration has no pass limit, and a NaN never meets the tolerance: hand it straight
    // back rather than spin forever.
    if (!std::isfinite(m) || !std::isfinite(ecc))
        return std::nan("");
    const double mr = rad(m);
    double e = mr;
    double delta = 0.0;
    do {
        delta = e - ecc * std::sin(e) - mr;
        e -= delta / (1.0 - ecc * std::cos(e));
    } while (delta < -1e-6 || delta > 1e-6);
    return e;
}

void MoonCalc::getMoonInfo()
{
    const double day = _jdateGMT - kEpoch1980;

    // The Sun.
    const double n = fixangle(day * 0.9856473320990837);
    const double m = fixangle(n + kSunLongitudeAtEpoch - kSunPerigeeLongitude);
    const double e = kepler(m, kEarthEccentricity);
    const double ec = 2.0 * deg(std::atan(std::tan(e * 0.5) * 1.0168601118216303));
    const double lambdaSun = fixangle(ec + kSunPerigeeLongitude);
    const double f = (1.0 + kEarthEccentricity * cosDeg(ec)) / 0.999720508476;
    const double sunDistance = kSunSemiMajorAxisKm / f;
    const double sunDiameter = f * kSunAngularSizeAtAxis;

    // The Moon.
    const double ml = fixangle(13.1763966 * day + kMoonMeanLongitudeAtEpoch);
    const double mm = fixangle(ml - 0.1114041 * day - kMoonPerigeeLongitudeAtEpoch);
    const double evection = 1.2739 * sinDeg(2.0 * (ml - lambdaSun) - mm);
    const double annual = 0.1858 * sinDeg(m);
    const double a3 = 0.37 * sinDeg(m);
    const double mmp = mm + evection - annual - a3;
    const double centre = 6.2886 * sinDeg(mmp);
    const double a4 = 0.214 * sinDeg(2.0 * mmp);
    const double lp = ml + evection + centre - annual + a4;
    const double variation = 0.6583 * sinDeg(2.0 * (lp - lambdaSun));
    const double moonAge = lp + variation - lambdaSun;

    _illum = 0.5 * (1.0 - cosDeg(moonAge));
    _dist = 383242.41154199 / (1.0 + kMoonEccentricity * cosDeg(mmp + centre));
    _diam = kMoonAngularSizeAtAxis / (_dist / kMoonSemiMajorAxisKm);

    const double angle = fixangle(moonAge);
    const double fraction = angle / 360.0;
    _phased = _southernHemi ? 1.0 - fraction : fraction;
    _phasei = getMoonPhaseAsInteger(_phased);
    _namedPhasei = getMoonPhaseAsInteger(fraction);
    const int halfDays = int(std::lround(angle / 180.0 * kSynodicMonth));
    _age_p = _southernHemi ? 60 - halfDays : halfDays;
    _age_j = kSynodicMonth * (_southernHemi ? 1.0 - fraction : fraction);

    const double x = _age_j;
    const double dayFraction = x - std::floor(x);
    _age_d = int(x);
    _age_h = int(dayFraction * 24.0);
    _age_m = int(dayFraction * 1440.0) % 60;

    _soldist = sunDistance;
    _soldiam = sunDiameter;
}

// Octant bands are deliberately asymmetric: the last-quarter band starts at 73.5 rather than
// 72.5, so it is 4 wide against the first quarter's 5, and the waning gibbous band is 21 wide
// against the waxing one's 20. The pictures and everything stored with them follow these edges.
int MoonCalc::getMoonPhaseAsInteger(double phase)
{
    if (!(phase >= 0.0 && phase <= 1.0))
        return 0;
    const double p = 100.0 * phase;
    if (p < 2.5)
        return 0;
    if (p < 22.5)
        return 1;
    if (p < 27.5)
        return 2;
    if (p < 47.5)
        return 3;
    if (p < 52.5)
        return 4;
    if (p < 73.5)
        return 5;
    if (p < 77.5)
        return 6;
    if (p <= 97.49)
        return 7;
    return 0;
}

int MoonCalc::getPreciseMoonPhaseAsInteger(double phase)
{
    return int(std::lround(20.0 * phase));
}

// --- Phase instants ---------------------------------------------------------------------------

double MoonCalc::getMeanPhase(double k, double jd)
{
    const double t = (jd - 2415020.0) / 36525.0;
    return meanPhaseTerms(k, t);
}

double MoonCalc::getTruePhase(double k, double phase)
{
    const double kk = k + phase;
    const double t = kk / 1236.85;
    const double t2 = t * t;
    const double t3 = t2 * t;
    const double pt = meanPhaseTerms(kk, t);
    const double m = 359.2242 + 29.10535608 * kk - 0.0000333 * t2 - 0.00000347 * t3;
    const double mp = 306.0253 + 385.81691806 * kk + 0.0107306 * t2 + 0.00001236 * t3;
    const double f = 21.2964 + 390.67050646 * kk - 0.0016528 * t2 - 0.00000239 * t3;

    if (phase < 0.01 || std::abs(phase - 0.5) < 0.01) {
        return pt + (0.1734 - 0.000393 * t) * sinDeg(m) + 0.0021 * sinDeg(2.0 * m) -
               0.4068 * sinDeg(mp) + 0.0161 * sinDeg(2.0 * mp) - 0.0004 * sinDeg(3.0 * mp) +
               0.0104 * sinDeg(2.0 * f) - 0.0051 * sinDeg(m + mp) - 0.0074 * sinDeg(m - mp) +
               0.0004 * sinDeg(2.0 * f + m) - 0.0004 * sinDeg(2.0 * f - m) -
               0.0006 * sinDeg(2.0 * f + mp) + 0.0010 * sinDeg(2.0 * f - mp) +
               0.0005 * sinDeg(m + 2.0 * mp);
    }
    if (std::abs(phase - 0.25) < 0.01 || std::abs(phase - 0.75) < 0.01) {
        double result = pt + (0.1721 - 0.0004 * t) * sinDeg(m) + 0.0021 * sinDeg(2.0 * m) -
                        0.6280 * sinDeg(mp) + 0.0089 * sinDeg(2.0 * mp) -
                        0.0004 * sinDeg(3.0 * mp) + 0.0079 * sinDeg(2.0 * f) -
                        0.0119 * sinDeg(m + mp) - 0.0047 * sinDeg(m - mp) +
                        0.0003 * sinDeg(2.0 * f + m) - 0.0004 * sinDeg(2.0 * f - m) -
                        0.0006 * sinDeg(2.0 * f + mp) + 0.0021 * sinDeg(2.0 * f - mp) +
                        0.0003 * sinDeg(m + 2.0 * mp) + 0.0004 * sinDeg(m - 2.0 * mp) -
                        0.0003 * sinDeg(2.0 * m + mp);
        if (phase < 0.5)
            result += 0.0028 - 0.0004 * cosDeg(m) + 0.0003 * cosDeg(mp);
        else
            result += -0.0028 + 0.0004 * cosDeg(m) - 0.0003 * cosDeg(mp);
        return result;
    }
    qWarning("TRUEPHASE called with invalid phase selector!");
    return pt;
}

void MoonCalc::getMoonPhaseArrayForDate(const QDateTime &date, PhaseArray &phaseArray)
{
    findLunation(date, phaseArray);
}

double MoonCalc::findLunation(const QDateTime &date, PhaseArray &phaseArray)
{
    const double sdate = julianDateForDate(date);
    const QDate before = calendarDateForJulianDate(sdate - 45.0).date();
    const double year = before.year();
    const double month = before.month();
    double k1 = std::floor((year + (month - 1.0) * 0.08333333333333333 - 1900.0) * 12.3685);

    double adate = sdate - 45.0;
    double nt1 = getMeanPhase(k1, adate);
    adate = nt1;
    double k2 = k1 + 1.0;
    // The first mean new moon lies one to three lunations before the date; four passes are
    // always enough, and the search never makes more.
    for (int pass = 1; pass <= 4; ++pass) {
        adate += kSynodicMonth;
        k2 = k1 + 1.0;
        const double nt2 = getMeanPhase(k2, adate);
        if (nt1 <= sdate && nt2 > sdate)
            break;
        nt1 = nt2;
        if (pass == 4)
            break;
        k1 = k2;
    }

    Q_ASSERT(k2 == k1 + 1.0);
    fillPhases(k1, phaseArray);
    return k1;
}

void MoonCalc::fillPhases(double k, PhaseArray &phaseArray)
{
    phaseArray[0] = getTruePhase(k, 0.0);
    phaseArray[1] = getTruePhase(k, 0.25);
    phaseArray[2] = getTruePhase(k, 0.5);
    phaseArray[3] = getTruePhase(k, 0.75);
    phaseArray[4] = getTruePhase(k + 1.0, 0.0);
    phaseArray[5] = getTruePhase(k + 1.0, 0.75);
}
