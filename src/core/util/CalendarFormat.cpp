#include "core/util/CalendarFormat.h"

#include <QTimeZone>

namespace {

const char *const kMonths[] = {"January",   "February", "March",    "April",
                               "May",       "June",     "July",     "August",
                               "September", "October",  "November", "December"};
const char *const kDays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                             "Friday", "Saturday", "Sunday"};

QString twoDigits(int value)
{
    return QString::number(value).rightJustified(2, QLatin1Char('0'));
}

QString offsetText(const QDateTime &dateTime)
{
    const int offset = dateTime.offsetFromUtc();
    const int minutes = qAbs(offset) / 60;
    return QString(offset < 0 ? QLatin1Char('-') : QLatin1Char('+')) + twoDigits(minutes / 60) +
           twoDigits(minutes % 60);
}

} // namespace

QString CalendarFormat::englishMonthName(int month, bool abbreviated)
{
    if (month < 1 || month > 12)
        return QString();
    const QString name = QString::fromLatin1(kMonths[month - 1]);
    return abbreviated ? name.left(3) : name;
}

QString CalendarFormat::englishDayName(int dayOfWeek, bool abbreviated)
{
    if (dayOfWeek < 1 || dayOfWeek > 7)
        return QString();
    const QString name = QString::fromLatin1(kDays[dayOfWeek - 1]);
    return abbreviated ? name.left(3) : name;
}

int CalendarFormat::monthFromEnglishName(const QString &name)
{
    for (int m = 1; m <= 12; ++m) {
        if (name.compare(englishMonthName(m, false), Qt::CaseInsensitive) == 0 ||
            name.compare(englishMonthName(m, true), Qt::CaseInsensitive) == 0)
            return m;
    }
    return 0;
}

QString CalendarFormat::format(const QDateTime &dateTime, const QString &pattern)
{
    const QDate date = dateTime.date();
    const QTime time = dateTime.time();
    QString out;
    out.reserve(pattern.size() + 16);

    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c != QLatin1Char('%') || i + 1 >= pattern.size()) {
            out += c;
            continue;
        }
        const QChar conv = pattern.at(++i);
        switch (conv.unicode()) {
        case 'A':
            out += englishDayName(date.dayOfWeek(), false);
            break;
        case 'a':
            out += englishDayName(date.dayOfWeek(), true);
            break;
        case 'B':
            out += englishMonthName(date.month(), false);
            break;
        case 'b':
            out += englishMonthName(date.month(), true);
            break;
        case 'd':
            out += twoDigits(date.day());
            break;
        case 'e':
            out += QString::number(date.day()).rightJustified(2, QLatin1Char(' '));
            break;
        case 'H':
            out += twoDigits(time.hour());
            break;
        case 'I':
            out += twoDigits(time.hour() % 12 == 0 ? 12 : time.hour() % 12);
            break;
        case 'j':
            out += QString::number(date.dayOfYear()).rightJustified(3, QLatin1Char('0'));
            break;
        case 'M':
            out += twoDigits(time.minute());
            break;
        case 'm':
            out += twoDigits(date.month());
            break;
        case 'p':
            out += time.hour() < 12 ? QStringLiteral("AM") : QStringLiteral("PM");
            break;
        case 'S':
            out += twoDigits(time.second());
            break;
        case 'Y':
            out += QString::number(date.year());
            break;
        case 'y':
            out += twoDigits(date.year() % 100);
            break;
        case 'Z':
            out += dateTime.timeZoneAbbreviation();
            break;
        case 'z':
            out += offsetText(dateTime);
            break;
        case '%':
            out += QLatin1Char('%');
            break;
        default:
            out += QLatin1Char('%');
            out += conv;
            break;
        }
    }
    return out;
}
