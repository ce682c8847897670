#include "core/settings/NotificationSettings.h"

#include <QSettings>

#include <cmath>

namespace {

struct FamilyName {
    int family;
    const char *prefix;
    const char *word;
};

const FamilyName kFamilyNames[] = {
    {NotificationSettings::Warnings, "WAR", "warnings"},
    {NotificationSettings::Watches, "WAT", "watches"},
    {NotificationSettings::Alerts, "ALT", "alerts"},
    {NotificationSettings::Summaries, "SUM", "summaries"},
};

// The stored text of a key, or none when there is no key or its value is not plain text (a
// list, bytes): that is a damaged value, and the caller keeps its default.
std::optional<QString> storedText(QSettings &settings, const char *key)
{
    const QVariant value = settings.value(QLatin1String(key));
    if (!value.isValid() || value.typeId() == QMetaType::QStringList ||
        value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QByteArray)
        return std::nullopt;
    return value.toString().trimmed();
}

void readFlag(QSettings &settings, const char *key, bool &flag)
{
    const std::optional<QString> text = storedText(settings, key);
    if (text == QLatin1String("1") || text == QLatin1String("true"))
        flag = true;
    else if (text == QLatin1String("0") || text == QLatin1String("false"))
        flag = false;
}

void readInt(QSettings &settings, const char *key, int minimum, int maximum, int &result)
{
    bool ok = false;
    const int value = storedText(settings, key).value_or(QString()).toInt(&ok);
    if (ok && value >= minimum && value <= maximum)
        result = value;
}

void readTime(QSettings &settings, const char *key, QTime &result)
{
    const QTime time =
        QTime::fromString(storedText(settings, key).value_or(QString()), QStringLiteral("HH:mm"));
    if (time.isValid())
        result = time;
}

std::optional<double> readDegrees(const QString &text, double limit)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value) || std::abs(value) > limit)
        return std::nullopt;
    return value;
}

QString degreesText(const std::optional<double> &value)
{
    return value ? QString::number(*value, 'g', 10) : QString();
}

} // namespace

double NotificationSettings::flareFlux() const
{
    const double base = flareClass.startsWith(QLatin1Char('X'))   ? 1e-4
                        : flareClass.startsWith(QLatin1Char('M')) ? 1e-5
                                                                  : 1e-6;
    return base * flareClass.mid(1).toDouble();
}

int NotificationSettings::familyOfCode(const QString &code)
{
    for (const auto &family : kFamilyNames) {
        if (code.startsWith(QLatin1String(family.prefix)))
            return family.family;
    }
    return 0;
}

bool NotificationSettings::inQuietHours(const QTime &time) const
{
    if (!quietHours || quietStart == quietEnd)
        return false;
    if (quietStart < quietEnd)
        return time >= quietStart && time < quietEnd;
    return time >= quietStart || time < quietEnd;
}

const QStringList &NotificationSettings::flareClasses()
{
    static const QStringList classes = {QStringLiteral("C5"), QStringLiteral("M1"),
                                        QStringLiteral("M5"), QStringLiteral("X1")};
    return classes;
}

std::optional<double> NotificationSettings::readLatitude(const QString &text)
{
    return readDegrees(text, 90.0);
}

std::optional<double> NotificationSettings::readLongitude(const QString &text)
{
    return readDegrees(text, 180.0);
}

void NotificationSettings::load(QSettings &settings)
{
    *this = NotificationSettings();
    readFlag(settings, kKpEnabled, kpEnabled);
    readInt(settings, kKpThreshold, kMinimumKpThreshold, kMaximumKpThreshold, kpThreshold);
    readFlag(settings, kFlareEnabled, flareEnabled);
    const QString flare = storedText(settings, kFlareClass).value_or(QString()).toUpper();
    if (flareClasses().contains(flare))
        flareClass = flare;

    // The families are words ("warnings watches"); an unknown word means the value is damaged.
    if (const std::optional<QString> text = storedText(settings, kFamilies)) {
        int flags = 0;
        bool damaged = false;
        for (const QString &word : text->split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            int found = 0;
            for (const auto &family : kFamilyNames) {
                if (word == QLatin1String(family.word))
                    found = family.family;
            }
            damaged = damaged || !found;
            flags |= found;
        }
        if (!damaged)
            families = flags;
    }

    // A latitude without a longitude, or one out of range, is no location.
    latitude = readLatitude(storedText(settings, kLatitude).value_or(QString()));
    longitude = readLongitude(storedText(settings, kLongitude).value_or(QString()));
    if (!hasLocation())
        latitude = longitude = std::nullopt;
    readInt(settings, kAuroraThreshold, 1, 100, auroraThreshold);
    readFlag(settings, kQuietHours, quietHours);
    readTime(settings, kQuietStart, quietStart);
    readTime(settings, kQuietEnd, quietEnd);
}

void NotificationSettings::save(QSettings &settings) const
{
    QStringList words;
    for (const auto &family : kFamilyNames) {
        if (families & family.family)
            words.append(QLatin1String(family.word));
    }
    settings.setValue(QLatin1String(kKpEnabled), int(kpEnabled));
    settings.setValue(QLatin1String(kKpThreshold), kpThreshold);
    settings.setValue(QLatin1String(kFlareEnabled), int(flareEnabled));
    settings.setValue(QLatin1String(kFlareClass), flareClass);
    settings.setValue(QLatin1String(kFamilies), words.join(QLatin1Char(' ')));
    settings.setValue(QLatin1String(kLatitude), degreesText(latitude));
    settings.setValue(QLatin1String(kLongitude), degreesText(longitude));
    settings.setValue(QLatin1String(kAuroraThreshold), auroraThreshold);
    settings.setValue(QLatin1String(kQuietHours), int(quietHours));
    settings.setValue(QLatin1String(kQuietStart), quietStart.toString(QStringLiteral("HH:mm")));
    settings.setValue(QLatin1String(kQuietEnd), quietEnd.toString(QStringLiteral("HH:mm")));
}
