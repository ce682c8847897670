#include "core/settings/SettingsStore.h"

#include <QDateTime>
#include <QEvent>
#include <QFileInfo>
#include <QThreadPool>

#include <utility>

SettingsStore::SettingsStore()
{
    _writeTimer.setSingleShot(true);
    _writeTimer.setInterval(kWriteDelayMilliseconds);
    connect(&_writeTimer, &QTimer::timeout, this, &SettingsStore::writeInBackground);
}

// QSettings writes what is still pending when it goes. A background write cannot be under way:
// the application object waits for the worker threads when it goes, before this.
SettingsStore::~SettingsStore()
{
    _writeTimer.stop();
}

void SettingsStore::writeNow()
{
    _writeTimer.stop();
    // Waits for a background write's turn to end, if one is under way, and writes what is left.
    sync();
}

bool SettingsStore::event(QEvent *event)
{
    // QSettings posts itself this request with the first change after it last wrote (or read the
    // file anew, which sync() does too), and writes when it arrives; it posts no other until it
    // has. Here the request only starts the wait. A request only arrives while an event loop
    // runs, so the timer has one to run in.
    if (event->type() == QEvent::UpdateRequest) {
        if (_writing)
            _changedWhileWriting = true;
        else if (!_writeTimer.isActive())
            _writeTimer.start();
        return true;
    }
    return QSettings::event(event);
}

void SettingsStore::writeInBackground()
{
    _writing = true;
    const QString path = fileName();
    const Format fileFormat = format();
    QThreadPool::globalInstance()->start([this, path, fileFormat] {
        const auto stamp = [&path] {
            const QFileInfo file(path);
            return std::pair(file.size(), file.lastModified());
        };
        const auto before = stamp();
        QSettings(path, fileFormat).sync();
        const bool wrote = stamp() != before;
        QMetaObject::invokeMethod(
            this, [this, wrote] { backgroundWriteDone(wrote); }, Qt::QueuedConnection);
    });
}

void SettingsStore::backgroundWriteDone(bool wrote)
{
    _writing = false;
    const bool changed = std::exchange(_changedWhileWriting, false);
    // This object still counts its changes as pending and asks for no write of the next ones.
    // Changes made while the worker wrote are looked for again a little later, on the worker too;
    // once it finds nothing left to write, this object starts counting again (its sync() then
    // only looks at the file, and writes here only a change made in the moment since).
    if (wrote || changed)
        _writeTimer.start();
    else
        sync();
}
