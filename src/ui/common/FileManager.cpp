#include "ui/common/FileManager.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
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

bool FileManager::copyFile(const QString &source, const QString &destination, QString *error)
{
    // Writing a file over itself would read it while it is being replaced; it is there already.
    const QFileInfo target(destination);
    if (target.exists() && target.canonicalFilePath() == QFileInfo(source).canonicalFilePath())
        return true;

    QFile in(source);
    if (!in.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(source, in.errorString());
        return false;
    }
    QSaveFile out(destination);
    if (!out.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("%1: %2").arg(destination, out.errorString());
        return false;
    }
    // Streamed, so that a large file never has to fit in memory.
    QByteArray buffer(256 * 1024, Qt::Uninitialized);
    for (;;) {
        const qint64 count = in.read(buffer.data(), buffer.size());
        if (count == 0)
            break;
        if (count < 0) {
            *error = QStringLiteral("%1: %2").arg(source, in.errorString());
            return false; // the unfinished copy is discarded with `out`
        }
        if (out.write(buffer.constData(), count) != count) {
            *error = QStringLiteral("%1: %2").arg(destination, out.errorString());
            return false;
        }
    }
    if (!out.commit()) {
        *error = QStringLiteral("%1: %2").arg(destination, out.errorString());
        return false;
    }
    return true;
}
