#pragma once

#include <QDateTime>
#include <QTimeZone>

#include <array>

// The Moon's phase, illumination, age and distance, the Sun's distance and the instants of the
// principal phases of three consecutive lunations, for one date. Nothing is downloaded: it all
// follows from the date, the user's time zone and the hemisphere.
//
// Moon and Sun positions use a low-precision method with epoch 1980 January 0.0; the phase
// instants use the mean-and-true-phase method with epoch 1900. Everything is double precision.
//
// A calculator is always complete: the constructor describes the present moment, and setDate()
// and setDisplayForSouthernHemisphere() recompute everything at once.
class MoonCalc {
public:
    // Six phase instants (Julian dates, universal time) of lunation k: its new moon, first
    // quarter, full moon and last quarter, then the new moon and the last quarter of lunation
    // k + 1. The last slot is a date that lies safely inside the following lunation.
    using PhaseArray = std::array<double, 6>;

    // The synodic month in days.
    static constexpr double kSynodicMonth = 29.53058868;

    MoonCalc();

    void setup();
    // Takes the date in its own time zone; its clock fields are the local clock.
    void setDate(const QDateTime &date);
    void setDisplayForSouthernHemisphere(bool southern);
    void update();
    void awakeFromNib() {}

    // Plain accessors.
    QDateTime date() const { return _date; }
    QDateTime dateAtGMT() const { return _dateGMT; }
    double julianDate() const { return _jdate; }
    double julianDateGMT() const { return _jdateGMT; }
    double moonPhaseAsDouble() const { return _phased; }
    // The octant of moonPhaseAsDouble(): mirrored in the southern display mode, it picks the
    // picture.
    int moonPhaseAsInteger() const { return _phasei; }
    // The octant of the Moon's real phase, the same in both hemispheres: it names the phase.
    int namedPhaseAsInteger() const { return _namedPhasei; }
    double moonIllumination() const { return _illum; }
    double moonDistanceKilometers() const { return _dist; }
    double moonAngularDiameter() const { return _diam; }
    int moonAgeOfPhase() const { return _age_p; }
    double moonAge() const { return _age_j; }
    int moonAgeDays() const { return _age_d; }
    int moonAgeHours() const { return _age_h; }
    int moonAgeMinutes() const { return _age_m; }
    double solDistanceKilometers() const { return _soldist; }
    double solAngularDiameter() const { return _soldiam; }
    bool displayForSouthernHemisphere() const { return _southernHemi; }
    const PhaseArray &previousPhases() const { return _previousphases; }
    const PhaseArray &currentPhases() const { return _currentphases; }
    const PhaseArray &nextPhases() const { return _nextphases; }

    // Derived accessors.
    double moonDistanceMiles() const;
    double solDistanceMiles() const;
    bool isBlueMoon() const;

    // The principal phases around the date, as local dates. A "last" phase lies on an earlier
    // Julian day than the date, a "next" one on a later Julian day; a phase on the date's own
    // Julian day counts as neither.
    QDateTime lastNewMoon() const;
    QDateTime lastFirstQuarter() const;
    QDateTime lastFullMoon() const;
    QDateTime lastLastQuarter() const;
    QDateTime currentNewMoon() const;
    QDateTime currentFirstQuarter() const;
    QDateTime currentFullMoon() const;
    QDateTime currentLastQuarter() const;
    QDateTime nextNewMoon() const;
    QDateTime nextFirstQuarter() const;
    QDateTime nextFullMoon() const;
    QDateTime nextLastQuarter() const;
    // nextNewMoon(), except where that is not after the date: the lunation search brackets the
    // date by mean new moons, so from a date just after a true new moon that came before its
    // mean time, nextNewMoon() is that very new moon. The one after it is given then, so that
    // "next" never points back and stepping from new moon to new moon always moves on.
    QDateTime upcomingNewMoon() const;

    // Computations; all may be used on their own.
    static double julianDateForDate(const QDateTime &date);
    static QDateTime calendarDateForJulianDate(double jd);
    static QDateTime dateAtGMT(const QDateTime &date);
    static QDateTime dateFromGMT(const QDateTime &date);
    static double kepler(double m, double ecc);
    void getMoonInfo();
    static int getMoonPhaseAsInteger(double phase);
    static int getPreciseMoonPhaseAsInteger(double phase);
    static double getMeanPhase(double k, double jd);
    static double getTruePhase(double k, double phase);
    static void getMoonPhaseArrayForDate(const QDateTime &date, PhaseArray &phaseArray);

    // The user's time zone, in which every date is made and read.
    static QTimeZone defaultTimeZone();
    // A date from clock fields in a zone. A day of 0 or past the month's last day counts on
    // from the first of the month (day 0 is the last day of the month before).
    static QDateTime dateWithYear(int year, int month, int day, int hour, int minute, int second,
                                  const QTimeZone &timeZone);

private:
    // The phase search proper; returns the lunation number it settled on.
    static double findLunation(const QDateTime &date, PhaseArray &phaseArray);
    static void fillPhases(double k, PhaseArray &phaseArray);
    // The date for a phase instant: the current lunation's when it lies on the wanted side of
    // the date's Julian day, else the other lunation's.
    QDateTime lastPhase(int slot) const;
    QDateTime nextPhase(int slot) const;
    static QDateTime localDateForJulianDate(double jd);

    QDateTime _date;
    QDateTime _dateGMT;
    double _jdate = 0.0;
    double _jdateGMT = 0.0;
    double _phased = 0.0;
    int _phasei = 0;
    int _namedPhasei = 0;
    PhaseArray _previousphases{};
    PhaseArray _currentphases{};
    PhaseArray _nextphases{};
    double _illum = 0.0;
    int _age_p = 0;
    double _age_j = 0.0;
    int _age_d = 0;
    int _age_h = 0;
    int _age_m = 0;
    double _dist = 0.0;
    double _diam = 0.0;
    double _soldist = 0.0;
    double _soldiam = 0.0;
    bool _southernHemi = false;
};
