#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

class MoonCalc;

// The texts that describe a calculated Moon, shared by the Moon view and "vantorel moon" so that
// both always say the same thing. Dates use English month names whatever the locale; the
// distance uses the locale's grouping and decimal separators.
class MoonText {
public:
    static QString dateLine(const MoonCalc &calc);
    static QString phasePercentLine(const MoonCalc &calc);
    static QString illuminationLine(const MoonCalc &calc);
    static QString distanceLine(const MoonCalc &calc, const QLocale &locale = QLocale());
    static QString ageLine(const MoonCalc &calc);
    static QString nextFullMoonLine(const MoonCalc &calc);
    // The upcoming new moon: never one before the date (see MoonCalc::upcomingNewMoon()).
    static QString nextNewMoonLine(const MoonCalc &calc);
    // The name of the Moon's phase from the eight names in octant order (MoonPhaseNames). Only
    // the picture is mirrored for the southern hemisphere; a phase has the same name in both.
    static QString phaseName(const MoonCalc &calc, const QStringList &names);
    // The seven lines above, in that order.
    static QStringList lines(const MoonCalc &calc, const QLocale &locale = QLocale());

    // "22 days, 17 hours, 54 minutes". Zero hours are written out, zero days and minutes are
    // left out; a text without minutes keeps its trailing ", ".
    static QString formatAgeString(int days, int hours, int minutes);
    static QString formatAgeString(const MoonCalc &calc);
    // Two decimals with thousand separators: "402,126.49"; zero is "0.00" and a negative value
    // is put in parentheses.
    static QString formatDistance(double kilometres, const QLocale &locale = QLocale());
    // "January 01, 2008 12:00 AM", in local time, or "January 01, 2008 05:00 AM UTC" when the
    // window shows times in UTC (DisplayTime).
    static QString formatDate(const QDateTime &date);
};
