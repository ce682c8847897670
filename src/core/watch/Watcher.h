#pragma once

#include "core/now/NowSummary.h"
#include "core/watch/WatchEvent.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

#include <optional>

class AuroraGrid;
class LogSink;
class NotificationSettings;
class QSettings;

// The rules that turn the Now data into events worth a notification, with the state that keeps
// them from nagging:
//
// - a geomagnetic storm: the K index now (as `vantorel now` gives it) reaches the threshold; once,
//   until it has fallen below the threshold − 1;
// - a solar flare: the 0.1–0.8 nm X-ray flux reaches the class threshold; once per flare, until
//   it has fallen below half of it. Every minute since the last look is read, so a short peak
//   between two downloads is not missed;
// - a forecasters' message of a chosen family, issued in the last 24 hours, once for each code
//   and serial number;
// - the aurora at the home location reaching the threshold while the sky is dark there; once,
//   until it falls below half of it or the day breaks.
//
// In the quiet hours, events are held and come out together when they end. The state (armed or
// not, the messages seen, the events held) lives in the settings store and is read and written at
// every evaluation, so that a restart, or another process watching the same data, neither
// repeats nor loses an event. Every event raised goes to the log as a message.
class Watcher {
public:
    explicit Watcher(QSettings &store, LogSink *log = nullptr);

    // The kinds of Now data the rules read.
    static QStringList kindsRead();

    // Applies the rules to the data as of `now`. Returns what to deliver now: nothing in the
    // quiet hours (what was raised is held), otherwise the held events (marked `held`), then the
    // new ones, oldest first.
    QList<WatchEvent> evaluate(const NowSummary::Data &data, const AuroraGrid *aurora,
                               const NotificationSettings &settings, const QDateTime &now);
    // The held events, once the quiet hours are over; nothing while they last.
    QList<WatchEvent> releaseHeld(const NotificationSettings &settings, const QDateTime &now);
    // When the quiet hours that hold events end; none when nothing is held or they are over.
    std::optional<QDateTime> heldUntil(const NotificationSettings &settings, const QDateTime &now);

    // How far back a first look at the X-ray flux goes, and how old an aurora forecast's
    // observation may be.
    static constexpr qint64 kFirstFlareLookSeconds = 15 * 60;
    static constexpr qint64 kAuroraStaleSeconds = 2 * 3600;
    // A message counts for a day; it is remembered as seen for three.
    static constexpr qint64 kMessageSeconds = 86400;
    static constexpr qint64 kSeenSeconds = 3 * 86400;

private:
    QSettings &_store;
    LogSink *_log;
};
