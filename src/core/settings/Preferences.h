#pragma once

#include "core/settings/NotificationSettings.h"

#include <QString>

#include <optional>

class QSettings;

// The application-wide preferences. They are read once at start-up, changed in memory by the
// preferences panel and the online commands, and written back once at an orderly shutdown.
// Everything that needs one of them (nodes, groups, the log) reads it from the shared instance,
// so a change takes effect for whoever reads next.
class Preferences {
public:
    static Preferences &shared();

    // Reads the stored values; absent keys take the registered defaults, unreadable ones read
    // as 0, as the settings store does for any number it cannot parse.
    void loadPreferences(QSettings &settings);
    void savePreferences(QSettings &settings) const;
    // Back to the values a first run has (lastView to -1, "not read yet").
    void reset();

    int lastView() const { return _lastView; }
    bool isOnline() const { return _isOnline; }
    bool logErrorsOnly() const { return _logErrorsOnly; }
    bool beepOnErrors() const { return _beepOnErrors; }
    bool downloadMissingData() const { return _downloadMissingData; }
    // The time-out in force: a value given for this run only wins over the stored one.
    float timeoutSeconds() const { return _timeoutOverride.value_or(_timeoutSeconds); }
    // The time-out that transfers use: timeoutSeconds(), except that zero or less (which the
    // panel and --timeout accept) means the default. A transfer is never left without one.
    float transferTimeoutSeconds() const
    {
        const float seconds = timeoutSeconds();
        return seconds > 0.0f ? seconds : kDefaultTimeoutSeconds;
    }
    bool southernHemisphere() const { return _southernHemisphere; }
    // How many days the local history of the providers' data keeps; less than one day means the
    // default.
    int historyRetentionDays() const
    {
        return _historyRetentionDays >= 1 ? _historyRetentionDays : kDefaultHistoryRetentionDays;
    }

    // What the watcher notifies about; stored with the other preferences.
    const NotificationSettings &notifications() const { return _notifications; }
    void setNotifications(const NotificationSettings &settings) { _notifications = settings; }
    // How the window shows itself: times in UTC (the default) or local time, and its colours.
    enum class Appearance { System = 0, Light = 1, Dark = 2 };
    bool showTimesInUTC() const { return _showTimesInUTC; }
    // Any stored number that is not one of the three is the system's.
    Appearance appearance() const
    {
        return _appearance == int(Appearance::Light) || _appearance == int(Appearance::Dark)
                   ? Appearance(_appearance)
                   : Appearance::System;
    }
    void setShowTimesInUTC(bool on) { _showTimesInUTC = on; }
    void setAppearance(Appearance appearance) { _appearance = int(appearance); }

    void setLastView(int view) { _lastView = view; }
    void setOnline(bool online) { _isOnline = online; }
    void setLogErrorsOnly(bool on) { _logErrorsOnly = on; }
    void setBeepOnErrors(bool on) { _beepOnErrors = on; }
    void setDownloadMissingData(bool on) { _downloadMissingData = on; }
    // A value the user chose: stored at shutdown, and it ends any value given for this run only.
    void setTimeoutSeconds(float seconds)
    {
        _timeoutSeconds = seconds;
        _timeoutOverride.reset();
    }
    // A time-out for this run only (the --timeout option); never stored.
    void setTimeoutOverride(float seconds) { _timeoutOverride = seconds; }
    void setSouthernHemisphere(bool on) { _southernHemisphere = on; }
    void setHistoryRetentionDays(int days) { _historyRetentionDays = days; }

    static constexpr const char *kLastView = "lastView";
    static constexpr const char *kIsOnline = "isOnline";
    static constexpr const char *kLogErrorsOnly = "logErrorsOnly";
    static constexpr const char *kBeepOnErrors = "beepOnErrors";
    static constexpr const char *kDownloadMissingData = "downloadMissingData";
    static constexpr const char *kTimeoutSeconds = "timeoutSeconds";
    static constexpr const char *kSouthernHemisphere = "southernHemisphere";
    static constexpr const char *kHistoryRetentionDays = "historyRetentionDays";
    static constexpr const char *kShowTimesInUTC = "showTimesInUTC";
    static constexpr const char *kAppearance = "appearance";
    static constexpr float kDefaultTimeoutSeconds = 60.0f;
    static constexpr int kDefaultHistoryRetentionDays = 400;

private:
    int _lastView = -1;
    bool _isOnline = true;
    bool _logErrorsOnly = false;
    bool _beepOnErrors = false;
    bool _downloadMissingData = true;
    float _timeoutSeconds = kDefaultTimeoutSeconds;
    bool _southernHemisphere = false;
    int _historyRetentionDays = kDefaultHistoryRetentionDays;
    bool _showTimesInUTC = true;
    int _appearance = int(Appearance::System);
    std::optional<float> _timeoutOverride;
    NotificationSettings _notifications;
};
