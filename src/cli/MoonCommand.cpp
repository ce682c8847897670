#include "cli/MoonCommand.h"

#include "core/moon/MoonCalc.h"
#include "core/moon/MoonPhaseNames.h"
#include "core/moon/MoonText.h"
#include "core/util/Clock.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {

QJsonArray phaseArray(const MoonCalc::PhaseArray &phases)
{
    QJsonArray array;
    for (double jd : phases)
        array.append(jd);
    return array;
}

QString twoDigits(int value)
{
    return QString::number(value).rightJustified(2, QLatin1Char('0'));
}

} // namespace

std::optional<QDateTime> MoonCommand::parseDate(const QString &text, QString *error)
{
    const auto fail = [error](const QString &reason) -> std::optional<QDateTime> {
        if (error)
            *error = reason;
        return std::nullopt;
    };
    static const QRegularExpression pattern(
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(?:T(\\d{2}):(\\d{2})(?::(\\d{2}))?)?$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) {
        return fail(QStringLiteral("\"%1\" is not a date; use YYYY-MM-DD, YYYY-MM-DDTHH:MM or "
                                   "YYYY-MM-DDTHH:MM:SS (local time)")
                        .arg(text));
    }
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(),
                     match.captured(3).toInt());
    const QTime time(match.captured(4).toInt(), match.captured(5).toInt(),
                     match.captured(6).toInt());
    if (!date.isValid())
        return fail(QStringLiteral("\"%1\" names a day that does not exist").arg(text));
    if (!time.isValid())
        return fail(QStringLiteral("\"%1\" names a time that does not exist").arg(text));
    const QDateTime local(date, time, MoonCalc::defaultTimeZone());
    if (!local.isValid()) {
        return fail(QStringLiteral("\"%1\" falls in the hour that the clocks skip in this time "
                                   "zone")
                        .arg(text));
    }
    return local;
}

QString MoonCommand::isoDate(const QDateTime &date)
{
    const int offset = date.offsetFromUtc();
    const int minutes = qAbs(offset) / 60;
    return date.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) +
           (offset < 0 ? QLatin1Char('-') : QLatin1Char('+')) + twoDigits(minutes / 60) +
           QLatin1Char(':') + twoDigits(minutes % 60);
}

QJsonObject MoonCommand::toJson(const MoonCalc &calc)
{
    return {
        {QStringLiteral("date"), isoDate(calc.date())},
        {QStringLiteral("julianDate"), calc.julianDate()},
        {QStringLiteral("julianDateGMT"), calc.julianDateGMT()},
        {QStringLiteral("moonPhaseAsDouble"), calc.moonPhaseAsDouble()},
        {QStringLiteral("moonPhaseAsInteger"), calc.moonPhaseAsInteger()},
        {QStringLiteral("preciseMoonPhase"),
         MoonCalc::getPreciseMoonPhaseAsInteger(calc.moonPhaseAsDouble())},
        {QStringLiteral("moonIllumination"), calc.moonIllumination()},
        {QStringLiteral("moonDistanceKilometers"), calc.moonDistanceKilometers()},
        {QStringLiteral("moonDistanceMiles"), calc.moonDistanceMiles()},
        {QStringLiteral("moonAngularDiameter"), calc.moonAngularDiameter()},
        {QStringLiteral("moonAgeOfPhase"), calc.moonAgeOfPhase()},
        {QStringLiteral("moonAgeDays"), calc.moonAgeDays()},
        {QStringLiteral("moonAgeHours"), calc.moonAgeHours()},
        {QStringLiteral("moonAgeMinutes"), calc.moonAgeMinutes()},
        {QStringLiteral("solDistanceKilometers"), calc.solDistanceKilometers()},
        {QStringLiteral("solDistanceMiles"), calc.solDistanceMiles()},
        {QStringLiteral("solAngularDiameter"), calc.solAngularDiameter()},
        {QStringLiteral("isBlueMoon"), calc.isBlueMoon()},
        {QStringLiteral("lastNewMoon"), isoDate(calc.lastNewMoon())},
        {QStringLiteral("lastFirstQuarter"), isoDate(calc.lastFirstQuarter())},
        {QStringLiteral("lastFullMoon"), isoDate(calc.lastFullMoon())},
        {QStringLiteral("lastLastQuarter"), isoDate(calc.lastLastQuarter())},
        {QStringLiteral("currentNewMoon"), isoDate(calc.currentNewMoon())},
        {QStringLiteral("currentFirstQuarter"), isoDate(calc.currentFirstQuarter())},
        {QStringLiteral("currentFullMoon"), isoDate(calc.currentFullMoon())},
        {QStringLiteral("currentLastQuarter"), isoDate(calc.currentLastQuarter())},
        {QStringLiteral("nextNewMoon"), isoDate(calc.nextNewMoon())},
        {QStringLiteral("nextFirstQuarter"), isoDate(calc.nextFirstQuarter())},
        {QStringLiteral("nextFullMoon"), isoDate(calc.nextFullMoon())},
        {QStringLiteral("nextLastQuarter"), isoDate(calc.nextLastQuarter())},
        {QStringLiteral("previousPhases"), phaseArray(calc.previousPhases())},
        {QStringLiteral("currentPhases"), phaseArray(calc.currentPhases())},
        {QStringLiteral("nextPhases"), phaseArray(calc.nextPhases())},
    };
}

QString MoonCommand::description() const
{
    return QStringLiteral(
        "Describes the Moon for one date: its phase, illumination, distance and age, and the next "
        "full and new moon. Needs no network and no display.\n"
        "DATE is local time (the TZ variable applies): YYYY-MM-DD, YYYY-MM-DDTHH:MM or "
        "YYYY-MM-DDTHH:MM:SS.");
}

void MoonCommand::addOptions(QCommandLineParser &parser)
{
    parser.addOptions({
        {QStringLiteral("date"), QStringLiteral("Describe <DATE> instead of the present moment."),
         QStringLiteral("DATE")},
        {QStringLiteral("southern"),
         QStringLiteral("Show the phase as seen from the southern hemisphere.")},
        {QStringLiteral("json"), QStringLiteral("Print every computed value as one JSON object.")},
    });
}

int MoonCommand::execute(const QCommandLineParser &parser, const SharedOptions &)
{
    if (!parser.positionalArguments().isEmpty()) {
        return usageError(
            QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().first()));
    }

    QDateTime date = Clock::now().toTimeZone(MoonCalc::defaultTimeZone());
    if (parser.isSet(QStringLiteral("date"))) {
        QString error;
        const std::optional<QDateTime> parsed =
            parseDate(parser.value(QStringLiteral("date")), &error);
        if (!parsed)
            return usageError(QStringLiteral("--date: ") + error);
        date = *parsed;
    }

    MoonCalc calc;
    calc.setDisplayForSouthernHemisphere(parser.isSet(QStringLiteral("southern")));
    calc.setDate(date);

    if (parser.isSet(QStringLiteral("json"))) {
        print(stdout,
              QString::fromUtf8(QJsonDocument(toJson(calc)).toJson(QJsonDocument::Indented)));
        return Success;
    }

    QStringList lines = MoonText::lines(calc);
    const std::optional<QStringList> names = MoonPhaseNames::loadFromResources();
    if (names)
        lines.append(MoonText::phaseName(calc, *names));
    else
        qWarning("phaseNamesDict failed to load");
    print(stdout, lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
    return Success;
}
