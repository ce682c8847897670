#pragma once

#include <QString>
#include <QStringList>
#include <QTime>

#include <optional>

class QSettings;

// What the watcher tells the user about, and when: the threshold of each rule, the families of
// forecasters' messages, the home location for the aurora and the quiet hours. A value that a
// damaged or hand-edited settings file makes unreadable, or one outside its choices, reads as its
// default: a notification rule must never stop working, or start nagging, because of one bad key.
class NotificationSettings {
public:
    // The families of forecasters' messages, by the first three letters of the message code.
    enum Family { Warnings = 1, Watches = 2, Alerts = 4, Summaries = 8 };

    bool kpEnabled = true;
    // A K index from 4 to 9.
    int kpThreshold = kDefaultKpThreshold;
    bool flareEnabled = true;
    // One of flareClasses().
    QString flareClass = QStringLiteral("M1");
    // Family flags; all but the summaries at first.
    int families = Warnings | Watches | Alerts;
    // The home location, in degrees north and east; the aurora rule is off until both are set.
    std::optional<double> latitude;
    std::optional<double> longitude;
    // An aurora forecast value from 1 to 100.
    int auroraThreshold = kDefaultAuroraThreshold;
    // Off at first; the local clock times when they begin and end (they may span midnight).
    bool quietHours = false;
    QTime quietStart = QTime(22, 0);
    QTime quietEnd = QTime(7, 0);

    bool hasLocation() const { return latitude && longitude; }
    // The flux (W/m²) of the flare class threshold.
    double flareFlux() const;
    // The family of a message code ("WARK04" is a warning); 0 for none of the four.
    static int familyOfCode(const QString &code);
    bool wantsCode(const QString &code) const { return (families & familyOfCode(code)) != 0; }
    // Whether the local clock time lies in the quiet hours (never while they are off, or when
    // they begin and end at the same minute).
    bool inQuietHours(const QTime &time) const;

    // "C5", "M1", "M5", "X1".
    static const QStringList &flareClasses();
    // A latitude or longitude as typed: a number in the range, else none.
    static std::optional<double> readLatitude(const QString &text);
    static std::optional<double> readLongitude(const QString &text);

    void load(QSettings &settings);
    void save(QSettings &settings) const;

    static constexpr int kDefaultKpThreshold = 5;
    static constexpr int kMinimumKpThreshold = 4;
    static constexpr int kMaximumKpThreshold = 9;
    static constexpr int kDefaultAuroraThreshold = 10;

    static constexpr const char *kKpEnabled = "notifyKp";
    static constexpr const char *kKpThreshold = "notifyKpThreshold";
    static constexpr const char *kFlareEnabled = "notifyFlare";
    static constexpr const char *kFlareClass = "notifyFlareClass";
    static constexpr const char *kFamilies = "notifyMessageFamilies";
    static constexpr const char *kAuroraThreshold = "notifyAuroraThreshold";
    static constexpr const char *kLatitude = "homeLatitude";
    static constexpr const char *kLongitude = "homeLongitude";
    static constexpr const char *kQuietHours = "quietHours";
    static constexpr const char *kQuietStart = "quietHoursStart";
    static constexpr const char *kQuietEnd = "quietHoursEnd";
};
