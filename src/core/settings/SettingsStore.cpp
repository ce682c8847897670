#include "core/settings/SettingsStore.h"

#include <QEvent>
#include <QThreadPool>

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
        if (!_writing && !_writeTimer.isActive())
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
        QSettings(path, fileFormat).sync();
        QMetaObject::invokeMethod(this, &SettingsStore::backgroundWriteDone, Qt::QueuedConnection);
    });
}

void SettingsStore::backgroundWriteDone()
{
    _writing = false;
    // This object still counts its changes as pending, and would ask for no write of the next
    // ones: after the worker's write this finds nothing left to write (only a change made in the
    // moment since is written here) and starts counting again.
    sync();
}
