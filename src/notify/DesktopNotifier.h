#pragma once

#include "core/watch/WatchEvent.h"

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

class LogSink;

// Shows the watcher's events as desktop notifications, through the freedesktop notification
// service on the session bus: each event a notification of its own, with the application's icon
// and a default action, and the events held through the quiet hours together as one summary.
//
// Where no service answers (no session bus, or no notification daemon on it), the log, which has
// every event already, is all there is; undelivered() lets the window offer another way.
class DesktopNotifier : public QObject {
    Q_OBJECT

public:
    // On the session bus.
    explicit DesktopNotifier(QObject *parent = nullptr);
    DesktopNotifier(const QDBusConnection &bus, QObject *parent = nullptr);

    // Where to say, once, that notifications cannot be shown.
    void setLog(LogSink *log) { _log = log; }

    void deliver(const QList<WatchEvent> &events);
    void notify(const QString &title, const QString &body);

    // The icon and desktop entry that the application is installed under.
    static constexpr const char *kIconName = "org.example.Vantorel";
    static constexpr const char *kDesktopEntry = "org.example.Vantorel";

signals:
    // The user clicked one of our notifications.
    void activated();
    // No notification service took it.
    void undelivered(const QString &title, const QString &body);

private slots:
    void actionInvoked(uint id, const QString &action);
    void notificationClosed(uint id, uint reason);

private:
    void unavailable(const QString &title, const QString &body, const QString &why);

    QDBusConnection _bus;
    // The notifications shown and not closed yet: the service signals every client's clicks.
    QSet<uint> _shown;
    LogSink *_log = nullptr;
    bool _toldUnavailable = false;
};
