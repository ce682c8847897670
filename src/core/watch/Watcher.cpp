#include "core/watch/Watcher.h"

#include "core/log/LogSink.h"
#include "core/now/AuroraGrid.h"
#include "core/now/NowFormat.h"
#include "core/settings/NotificationSettings.h"
#include "core/watch/SolarPosition.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QSettings>

#include <algorithm>

namespace {

const char *const kKpArmed = "watchKpArmed";
const char *const kFlareArmed = "watchFlareArmed";
const char *const kFlareCheckedUntil = "watchFlareCheckedUntil";
const char *const kAuroraArmed = "watchAuroraArmed";
const char *const kSeenMessages = "watchSeenMessages";
const char *const kHeldEvents = "watchHeldEvents";

// What the rules remember between evaluations. A value that cannot be read takes its first-run
// state: armed, nothing seen, nothing held.
struct State {
    bool kpArmed = true;
    bool flareArmed = true;
    qint64 flareCheckedUntil = 0;
    bool auroraArmed = true;
    // "CODE#SERIAL" and when the message was issued.
    QMap<QString, qint64> seen;
    QList<WatchEvent> held;

    bool operator==(const State &other) const = default;

    void load(QSettings &store)
    {
        kpArmed = store.value(QLatin1String(kKpArmed), true).toBool();
        flareArmed = store.value(QLatin1String(kFlareArmed), true).toBool();
        flareCheckedUntil = store.value(QLatin1String(kFlareCheckedUntil), 0).toLongLong();
        auroraArmed = store.value(QLatin1String(kAuroraArmed), true).toBool();
        for (const QString &entry : store.value(QLatin1String(kSeenMessages)).toStringList()) {
            bool ok = false;
            const qint64 issued = entry.section(QLatin1Char('@'), -1).toLongLong(&ok);
            if (ok && entry.contains(QLatin1Char('@')))
                seen.insert(entry.section(QLatin1Char('@'), 0, -2), issued);
        }
        const QJsonArray events =
            QJsonDocument::fromJson(store.value(QLatin1String(kHeldEvents)).toString().toUtf8())
                .array();
        for (const QJsonValue &event : events) {
            if (const std::optional<WatchEvent> e = WatchEvent::fromJson(event.toObject()))
                held.append(*e);
        }
    }

    void save(QSettings &store) const
    {
        store.setValue(QLatin1String(kKpArmed), int(kpArmed));
        store.setValue(QLatin1String(kFlareArmed), int(flareArmed));
        store.setValue(QLatin1String(kFlareCheckedUntil), flareCheckedUntil);
        store.setValue(QLatin1String(kAuroraArmed), int(auroraArmed));
        QStringList entries;
        for (auto it = seen.cbegin(); it != seen.cend(); ++it)
            entries.append(it.key() + QLatin1Char('@') + QString::number(it.value()));
        store.setValue(QLatin1String(kSeenMessages), entries);
        QJsonArray events;
        for (const WatchEvent &event : held)
            events.append(event.toJson());
        store.setValue(QLatin1String(kHeldEvents),
                       QString::fromUtf8(QJsonDocument(events).toJson(QJsonDocument::Compact)));
    }
};

QString clock(qint64 time)
{
    return QDateTime::fromSecsSinceEpoch(time, Qt::UTC).toString(QStringLiteral("HH:mm 'UTC'"));
}

// 5.33, 5 and 6.67 as the forecasters write them.
QString kpText(double kp)
{
    return QString::number(kp, 'g', 3);
}

void kpRule(const QJsonObject &summary, const NotificationSettings &settings, State &state,
            QList<WatchEvent> &raised)
{
    const QJsonObject kp = summary.value(QStringLiteral("kp")).toObject();
    // A stale value is no K index "now": a storm of two days ago is news to no one.
    if (!settings.kpEnabled || kp.isEmpty() || kp.value(QStringLiteral("stale")).toBool())
        return;
    const double value = kp.value(QStringLiteral("value")).toDouble();
    const double threshold = settings.kpThreshold;
    if (state.kpArmed && value >= threshold) {
        state.kpArmed = false;
        const qint64 time =
            NowFormat::parseTime(kp.value(QStringLiteral("time")).toString()).value_or(0);
        raised.append(
            {QStringLiteral("kp"), time,
             QStringLiteral("Geomagnetic storm: Kp %1 (G%2)")
                 .arg(kpText(value))
                 .arg(kp.value(QStringLiteral("gScale")).toInt()),
             QStringLiteral("The planetary K index reached %1 (%2) at %3; your threshold is %4.")
                 .arg(kpText(value),
                      kp.value(QStringLiteral("estimated")).toBool() ? QStringLiteral("estimated")
                                                                     : QStringLiteral("observed"),
                      clock(time))
                 .arg(settings.kpThreshold),
             false});
    } else if (!state.kpArmed && value < threshold - 1.0) {
        state.kpArmed = true;
    }
}

void flareRule(const NowSummary::Data &data, const NotificationSettings &settings, qint64 now,
               State &state, QList<WatchEvent> &raised)
{
    const double threshold = settings.flareFlux();
    const qint64 from =
        std::max(state.flareCheckedUntil > 0 ? state.flareCheckedUntil
                                             : now - Watcher::kFirstFlareLookSeconds,
                 now - 86400);
    for (const NowSample &sample : data.value(QStringLiteral("xray"))) {
        if (sample.series != QLatin1String("0.1-0.8nm") || sample.time <= from || sample.time > now)
            continue;
        state.flareCheckedUntil = std::max(state.flareCheckedUntil, sample.time);
        if (!settings.flareEnabled)
            continue;
        if (state.flareArmed && sample.value >= threshold) {
            state.flareArmed = false;
            const QString flareClass = NowSummary::xrayClass(sample.value);
            raised.append({QStringLiteral("flare"), sample.time,
                           QStringLiteral("Solar flare: %1").arg(flareClass),
                           QStringLiteral("The 0.1-0.8 nm X-ray flux reached %1 (%2 W/m2) at "
                                          "%3; your threshold is %4.")
                               .arg(flareClass, QString::number(sample.value, 'e', 2),
                                    clock(sample.time), settings.flareClass),
                           false});
        } else if (!state.flareArmed && sample.value < threshold / 2.0) {
            state.flareArmed = true;
        }
    }
}

QString familyName(const QString &code)
{
    switch (NotificationSettings::familyOfCode(code)) {
    case NotificationSettings::Warnings:
        return QStringLiteral("Warning");
    case NotificationSettings::Watches:
        return QStringLiteral("Watch");
    case NotificationSettings::Alerts:
        return QStringLiteral("Alert");
    default:
        return QStringLiteral("Summary");
    }
}

void messageRule(const QJsonObject &summary, const NotificationSettings &settings, qint64 now,
                 State &state, QList<WatchEvent> &raised)
{
    const QJsonArray messages = summary.value(QStringLiteral("messages")).toArray();
    // The summary lists the newest first; events come oldest first.
    for (qsizetype i = messages.size() - 1; i >= 0; --i) {
        const QJsonObject message = messages.at(i).toObject();
        const QString code = message.value(QStringLiteral("code")).toString();
        const QJsonValue serial = message.value(QStringLiteral("serial"));
        const qint64 issued =
            NowFormat::parseTime(message.value(QStringLiteral("issued")).toString()).value_or(0);
        if (code.isEmpty() || !settings.wantsCode(code) || issued <= now - Watcher::kMessageSeconds)
            continue;
        const QString serialText =
            serial.isDouble() ? QString::number(serial.toInteger()) : NowFormat::isoTime(issued);
        const QString key = code + QLatin1Char('#') + serialText;
        if (state.seen.contains(key))
            continue;
        state.seen.insert(key, issued);
        const QString title = message.value(QStringLiteral("title")).toString();
        raised.append({QStringLiteral("message"), issued, title.isEmpty() ? code : title,
                       QStringLiteral("%1 %2, serial %3, issued %4.")
                           .arg(familyName(code), code, serialText, clock(issued)),
                       false});
    }
    for (auto it = state.seen.begin(); it != state.seen.end();) {
        if (it.value() < now - Watcher::kSeenSeconds)
            it = state.seen.erase(it);
        else
            ++it;
    }
}

void auroraRule(const AuroraGrid *aurora, const NotificationSettings &settings, qint64 now,
                State &state, QList<WatchEvent> &raised)
{
    if (!settings.hasLocation())
        return;
    const double latitude = *settings.latitude;
    const double longitude = *settings.longitude;
    if (!SolarPosition::isDark(now, latitude, longitude)) {
        state.auroraArmed = true; // the day has broken
        return;
    }
    if (!aurora || now - aurora->observationTime() > Watcher::kAuroraStaleSeconds)
        return;
    const double value = aurora->valueNear(latitude, longitude);
    const double threshold = settings.auroraThreshold;
    if (state.auroraArmed && value >= threshold) {
        state.auroraArmed = false;
        raised.append({QStringLiteral("aurora"), aurora->forecastTime(),
                       QStringLiteral("Aurora at home: %1").arg(value),
                       QStringLiteral("The aurora forecast for %1 gives %2 within a degree of your "
                                      "location, where the sky is dark; your threshold is %3.")
                           .arg(clock(aurora->forecastTime()))
                           .arg(value)
                           .arg(settings.auroraThreshold),
                       false});
    } else if (!state.auroraArmed && value < threshold / 2.0) {
        state.auroraArmed = true;
    }
}

// The next moment after `now` at which the local clock reads `time`.
QDateTime nextClockTime(const QDateTime &now, const QTime &time)
{
    const QDateTime local = now.toLocalTime();
    QDateTime next(local.date(), time);
    if (next <= local)
        next = QDateTime(local.date().addDays(1), time);
    return next;
}

} // namespace

Watcher::Watcher(QSettings &store, LogSink *log) : _store(store), _log(log) {}

QStringList Watcher::kindsRead()
{
    return {QStringLiteral("kp"), QStringLiteral("kp-forecast"), QStringLiteral("xray"),
            QStringLiteral("messages"), QStringLiteral("ovation")};
}

QList<WatchEvent> Watcher::evaluate(const NowSummary::Data &data, const AuroraGrid *aurora,
                                    const NotificationSettings &settings, const QDateTime &now)
{
    // Another process (the window, or `vantorel watch`) may have moved the state on.
    _store.sync();
    State state;
    state.load(_store);
    const State before = state;
    const qint64 seconds = now.toSecsSinceEpoch();
    const QJsonObject summary = NowSummary::summarize(data, seconds);

    QList<WatchEvent> raised;
    kpRule(summary, settings, state, raised);
    flareRule(data, settings, seconds, state, raised);
    messageRule(summary, settings, seconds, state, raised);
    auroraRule(aurora, settings, seconds, state, raised);
    std::stable_sort(raised.begin(), raised.end(),
                     [](const WatchEvent &a, const WatchEvent &b) { return a.time < b.time; });

    const bool quiet = settings.inQuietHours(now.toLocalTime().time());
    if (_log) {
        for (const WatchEvent &event : std::as_const(raised))
            _log->addMessageToLog(quiet ? event.logText() +
                                              QStringLiteral(" (held until the quiet hours end)")
                                        : event.logText());
    }
    QList<WatchEvent> deliver;
    if (quiet) {
        state.held.append(raised);
    } else {
        for (WatchEvent event : std::as_const(state.held)) {
            event.held = true;
            deliver.append(event);
        }
        deliver.append(raised);
        state.held.clear();
    }
    // Writing the settings file costs more than a frame on a slow disk, so it is written when a
    // rule raises an event or changes its mind, not for every look at the X-ray flux: started
    // again from the last such moment, the same minutes lead to the same state and no event.
    State unchanged = state;
    unchanged.flareCheckedUntil = before.flareCheckedUntil;
    if (!raised.isEmpty() || !(unchanged == before)) {
        state.save(_store);
        _store.sync();
    }
    return deliver;
}

QList<WatchEvent> Watcher::releaseHeld(const NotificationSettings &settings, const QDateTime &now)
{
    _store.sync();
    State state;
    state.load(_store);
    if (state.held.isEmpty() || settings.inQuietHours(now.toLocalTime().time()))
        return {};
    QList<WatchEvent> deliver;
    for (WatchEvent event : std::as_const(state.held)) {
        event.held = true;
        deliver.append(event);
    }
    state.held.clear();
    state.save(_store);
    _store.sync();
    return deliver;
}

std::optional<QDateTime> Watcher::heldUntil(const NotificationSettings &settings,
                                            const QDateTime &now)
{
    State state;
    state.load(_store);
    if (state.held.isEmpty() || !settings.inQuietHours(now.toLocalTime().time()))
        return std::nullopt;
    return nextClockTime(now, settings.quietEnd);
}
