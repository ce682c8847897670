#include "core/settings/SettingsStore.h"

#include <QEvent>

SettingsStore::SettingsStore()
{
    _writeTimer.setSingleShot(true);
    _writeTimer.setInterval(kWriteDelayMilliseconds);
    connect(&_writeTimer, &QTimer::timeout, this, &SettingsStore::writeNow);
}

// QSettings writes what is still pending when it goes.
SettingsStore::~SettingsStore()
{
    _writeTimer.stop();
}

void SettingsStore::writeNow()
{
    _writeTimer.stop();
    sync();
}

bool SettingsStore::event(QEvent *event)
{
    // QSettings posts itself this request with the first change after a write, and writes when it
    // arrives; it posts no other until that write. Here the request only starts the wait, and a
    // request only arrives while an event loop runs, so the timer always has one to run in.
    if (event->type() == QEvent::UpdateRequest) {
        if (!_writeTimer.isActive())
            _writeTimer.start();
        return true;
    }
    return QSettings::event(event);
}
