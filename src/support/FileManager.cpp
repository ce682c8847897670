#include "FileManager.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

bool FileManager::revealFile(const QString &path)
{
    const QString service = QStringLiteral("org.freedesktop.FileManager1");
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && bus.interface()) {
        const auto registered = bus.interface()->isServiceRegistered(service);
        const auto activatable = bus.interface()->activatableServiceNames();
        if ((registered.isValid() && registered.value()) ||
            (activatable.isValid() && activatable.value().contains(service))) {
            QDBusMessage call = QDBusMessage::createMethodCall(
                service, QStringLiteral("/org/freedesktop/FileManager1"), service,
                QStringLiteral("ShowItems"));
            call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
            // Fire and forget: a file manager that is slow to start must not block the window.
            if (bus.send(call))
                return true;
        }
    }
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}
