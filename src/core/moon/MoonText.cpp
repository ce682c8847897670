#include "core/moon/MoonText.h"

#include "core/moon/MoonCalc.h"
#include "core/moon/MoonPhaseNames.h"
#include "core/util/DisplayTime.h"

#include <cmath>

namespace {

// Percentages are written the same way in every locale: a point and two decimals.
QString percent(double fraction)
{
    return QString::number(100.0 * fraction, 'f', 2);
}

} // namespace

QString MoonText::formatDate(const QDateTime &date)
{
    return DisplayTime::format(date, QStringLiteral("%B %d, %Y %I:%M %p"));
}

QString MoonText::dateLine(const MoonCalc &calc)
{
    return QStringLiteral("Moon Phase for %1").arg(formatDate(calc.date()));
}

QString MoonText::phasePercentLine(const MoonCalc &calc)
{
    return QStringLiteral("Phase Percent: %1%").arg(percent(calc.moonPhaseAsDouble()));
}

QString MoonText::illuminationLine(const MoonCalc &calc)
{
    return QStringLiteral("Illumination: %1%").arg(percent(calc.moonIllumination()));
}

QString MoonText::distanceLine(const MoonCalc &calc, const QLocale &locale)
{
    return QStringLiteral("Distance: %1 km")
        .arg(formatDistance(calc.moonDistanceKilometers(), locale));
}

QString MoonText::ageLine(const MoonCalc &calc)
{
    return QStringLiteral("Age: %1").arg(formatAgeString(calc));
}

QString MoonText::nextFullMoonLine(const MoonCalc &calc)
{
    return QStringLiteral("Next Full Moon: %1").arg(formatDate(calc.nextFullMoon()));
}

QString MoonText::nextNewMoonLine(const MoonCalc &calc)
{
    return QStringLiteral("Next New Moon: %1").arg(formatDate(calc.upcomingNewMoon()));
}

QString MoonText::phaseName(const MoonCalc &calc, const QStringList &names)
{
    return MoonPhaseNames::nameForPhase(names, calc.namedPhaseAsInteger());
}

QStringList MoonText::lines(const MoonCalc &calc, const QLocale &locale)
{
    return {
        dateLine(calc), phasePercentLine(calc), illuminationLine(calc), distanceLine(calc, locale),
        ageLine(calc),  nextFullMoonLine(calc), nextNewMoonLine(calc)};
}

QString MoonText::formatAgeString(int days, int hours, int minutes)
{
    QString text;
    if (days == 1)
        text += QStringLiteral("%1 day, ").arg(days);
    else if (days >= 2)
        text += QStringLiteral("%1 days, ").arg(days);

    if (hours == 1)
        text += QStringLiteral("%1 hour, ").arg(hours);
    else if (hours >= 0)
        text += QStringLiteral("%1 hours, ").arg(hours);

    if (minutes == 1)
        text += QStringLiteral("%1 minute").arg(minutes);
    else if (minutes >= 2)
        text += QStringLiteral("%1 minutes").arg(minutes);
    return text;
}

QString MoonText::formatAgeString(const MoonCalc &calc)
{
    return formatAgeString(calc.moonAgeDays(), calc.moonAgeHours(), calc.moonAgeMinutes());
}

// The pattern is "#,###.00;0.00;(#,##0.00)": a positive value has no mandatory integer digit
// (0.5 is ".50"), zero has its own form, and a negative value is bracketed with at least one
// integer digit.
QString MoonText::formatDistance(double kilometres, const QLocale &locale)
{
    QLocale grouped = locale;
    // The C locale leaves out group separators by default; this format always wants them.
    grouped.setNumberOptions(grouped.numberOptions() & ~QLocale::OmitGroupSeparator);

    if (!std::isfinite(kilometres))
        return grouped.toString(kilometres, 'f', 2);
    const QString magnitude = grouped.toString(std::abs(kilometres), 'f', 2);
    if (magnitude == grouped.toString(0.0, 'f', 2))
        return magnitude;
    if (kilometres < 0.0)
        return QLatin1Char('(') + magnitude + QLatin1Char(')');
    if (std::abs(kilometres) < 1.0 && magnitude.startsWith(grouped.zeroDigit()))
        return magnitude.mid(grouped.zeroDigit().size());
    return magnitude;
}
