#include "core/settings/Preferences.h"

#include <QSettings>

#include <cmath>
#include <limits>

namespace {

// The defaults are registered as text, the way the store keeps them, and converted on reading.
const char *registeredDefault(const char *key)
{
    static const struct {
        const char *key;
        const char *value;
    } defaults[] = {
        {Preferences::kLastView, "0"},
        {Preferences::kIsOnline, "1"},
        {Preferences::kLogErrorsOnly, "0"},
        {Preferences::kBeepOnErrors, "0"},
        {Preferences::kDownloadMissingData, "1"},
        {Preferences::kTimeoutSeconds, "60"},
        {Preferences::kSouthernHemisphere, "0"},
        {Preferences::kHistoryRetentionDays, "400"},
        {Preferences::kShowTimesInUTC, "1"},
        {Preferences::kAppearance, "0"},
    };
    for (const auto &d : defaults) {
        if (qstrcmp(d.key, key) == 0)
            return d.value;
    }
    return "0";
}

QVariant readValue(QSettings &settings, const char *key)
{
    return settings.value(QLatin1String(key), QLatin1String(registeredDefault(key)));
}

int readInt(QSettings &settings, const char *key)
{
    bool ok = false;
    const QVariant value = readValue(settings, key);
    const int result = value.toInt(&ok);
    if (ok)
        return result;
    // A stored "1.0" or " 2" is still a number to the user who typed it.
    const double d = value.toString().trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(d))
        return 0;
    if (d >= double(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (d <= double(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return int(d);
}

float readFloat(QSettings &settings, const char *key)
{
    bool ok = false;
    const float result = readValue(settings, key).toString().trimmed().toFloat(&ok);
    return ok && std::isfinite(result) ? result : 0.0f;
}

} // namespace

Preferences &Preferences::shared()
{
    static Preferences instance;
    return instance;
}

void Preferences::reset()
{
    *this = Preferences();
}

void Preferences::loadPreferences(QSettings &settings)
{
    _lastView = readInt(settings, kLastView);
    _isOnline = readInt(settings, kIsOnline) != 0;
    _logErrorsOnly = readInt(settings, kLogErrorsOnly) != 0;
    _beepOnErrors = readInt(settings, kBeepOnErrors) != 0;
    _downloadMissingData = readInt(settings, kDownloadMissingData) != 0;
    _timeoutSeconds = readFloat(settings, kTimeoutSeconds);
    _southernHemisphere = readInt(settings, kSouthernHemisphere) != 0;
    _historyRetentionDays = readInt(settings, kHistoryRetentionDays);
    _notifications.load(settings);
    _showTimesInUTC = readInt(settings, kShowTimesInUTC) != 0;
    _appearance = readInt(settings, kAppearance);
}

void Preferences::savePreferences(QSettings &settings) const
{
    settings.setValue(QLatin1String(kLastView), _lastView);
    settings.setValue(QLatin1String(kIsOnline), int(_isOnline));
    settings.setValue(QLatin1String(kLogErrorsOnly), int(_logErrorsOnly));
    settings.setValue(QLatin1String(kBeepOnErrors), int(_beepOnErrors));
    settings.setValue(QLatin1String(kDownloadMissingData), int(_downloadMissingData));
    settings.setValue(QLatin1String(kTimeoutSeconds), double(_timeoutSeconds));
    settings.setValue(QLatin1String(kSouthernHemisphere), int(_southernHemisphere));
    settings.setValue(QLatin1String(kHistoryRetentionDays), _historyRetentionDays);
    _notifications.save(settings);
    settings.setValue(QLatin1String(kShowTimesInUTC), int(_showTimesInUTC));
    settings.setValue(QLatin1String(kAppearance), int(appearance()));
}
