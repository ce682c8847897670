#include "notify/DesktopNotifier.h"

#include "core/log/LogSink.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDateTime>
#include <QVariantMap>

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
const QString kDefaultAction = QStringLiteral("default");
// A notification daemon that hangs must not keep events waiting for long.
constexpr int kCallTimeoutMs = 5000;

} // namespace

DesktopNotifier::DesktopNotifier(QObject *parent)
    : DesktopNotifier(QDBusConnection::sessionBus(), parent)
{
}

DesktopNotifier::DesktopNotifier(const QDBusConnection &bus, QObject *parent)
    : QObject(parent), _bus(bus)
{
    if (!_bus.isConnected())
        return;
    _bus.connect(kService, kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                 SLOT(actionInvoked(uint, QString)));
    _bus.connect(kService, kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                 SLOT(notificationClosed(uint, uint)));
}

void DesktopNotifier::deliver(const QList<WatchEvent> &events)
{
    QStringList held;
    for (const WatchEvent &event : events) {
        if (event.held)
            held.append(QDateTime::fromSecsSinceEpoch(event.time, Qt::UTC)
                            .toString(QStringLiteral("HH:mm 'UTC' ")) +
                        event.title);
        else
            notify(event.title, event.detail);
    }
    if (held.size() == 1)
        notify(QStringLiteral("1 event during the quiet hours"), held.constFirst());
    else if (!held.isEmpty())
        notify(QStringLiteral("%1 events during the quiet hours").arg(held.size()),
               held.join(QLatin1Char('\n')));
}

void DesktopNotifier::notify(const QString &title, const QString &body)
{
    if (!_bus.isConnected()) {
        unavailable(title, body, QStringLiteral("there is no session bus"));
        return;
    }
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QLatin1String(kDesktopEntry)}};
    call << QStringLiteral("Vantorel") << uint(0) << QString::fromLatin1(kIconName) << title << body
         << QStringList{kDefaultAction, QStringLiteral("Show")} << hints << int(-1);
    auto *watcher = new QDBusPendingCallWatcher(_bus.asyncCall(call, kCallTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, title, body](QDBusPendingCallWatcher *finished) {
                finished->deleteLater();
                const QDBusPendingReply<uint> reply = *finished;
                if (reply.isError())
                    unavailable(title, body, reply.error().message());
                else
                    _shown.insert(reply.value());
            });
}

void DesktopNotifier::actionInvoked(uint id, const QString &action)
{
    if (_shown.contains(id) && action == kDefaultAction)
        emit activated();
}

void DesktopNotifier::notificationClosed(uint id, uint)
{
    _shown.remove(id);
}

void DesktopNotifier::unavailable(const QString &title, const QString &body, const QString &why)
{
    if (!_toldUnavailable && _log) {
        _log->addMessageToLog(
            QStringLiteral("Desktop notifications cannot be shown (%1); events are in this log.")
                .arg(why));
    }
    _toldUnavailable = true;
    emit undelivered(title, body);
}
