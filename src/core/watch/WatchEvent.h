#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

// Something the user asked to be told about: a rule ("kp", "flare", "message" or "aurora"), the
// moment of the data that raised it (seconds since 1970, UTC), a title and a sentence of detail.
// `held` marks an event that waited for the end of the quiet hours.
struct WatchEvent {
    QString rule;
    qint64 time = 0;
    QString title;
    QString detail;
    bool held = false;

    // {"rule", "time", "title", "detail"}, the time in ISO 8601 UTC ending in "Z".
    QJsonObject toJson() const;
    // An event as toJson() wrote it; none when a member is missing or wrong.
    static std::optional<WatchEvent> fromJson(const QJsonObject &object);
    // One line for a terminal: "2026-05-01 07:15 UTC  TITLE - DETAIL".
    QString line() const;
    // The activity log's entry: "TITLE: DETAIL".
    QString logText() const;

    bool operator==(const WatchEvent &other) const = default;
};
