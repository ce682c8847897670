#pragma once

#include "core/settings/NotificationSettings.h"
#include "core/watch/WatchEvent.h"
#include "core/watch/Watcher.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <functional>
#include <memory>
#include <utility>

class LogSink;
class Node;
class NodeGroup;
class QSettings;

// Runs the watcher over a group's data files (the Now group): after each download of a file the
// rules read, once its content has changed, and when the quiet hours that hold events end.
//
// Reading the files means parsing a day of one-minute X-ray samples and the aurora forecast's
// grid, tens of milliseconds: that runs on a thread of its own, and only the rules, which take
// next to nothing, run on the caller's thread, where the settings store lives. Downloads that land
// while a read is under way are answered by one more read after it.
class WatchService : public QObject {
    Q_OBJECT

public:
    // Where the rules' settings come from, read afresh at every evaluation.
    using SettingsSource = std::function<NotificationSettings()>;

    WatchService(QSettings &store, LogSink *log, SettingsSource settings,
                 QObject *parent = nullptr);
    // Waits for a read under way.
    ~WatchService() override;

    // Follows the group's downloads; the group's nodes name the files.
    void watchGroup(NodeGroup *group);
    // Reads the files and applies the rules now, on this thread; returns what to deliver.
    QList<WatchEvent> evaluateNow();
    // Reads the files in the background, then applies the rules unless no file changed since the
    // last evaluation; what there is to deliver comes with eventsReady().
    void evaluateSoon();

signals:
    void eventsReady(const QList<WatchEvent> &events);

private:
    struct Input;
    QList<std::pair<QString, QString>> files() const;
    static std::shared_ptr<Input> read(const QList<std::pair<QString, QString>> &files);
    void readFinished(const std::shared_ptr<Input> &input);
    QList<WatchEvent> apply(const Input &input);
    void releaseHeld();
    void scheduleRelease();

    Watcher _watcher;
    LogSink *_log;
    SettingsSource _settings;
    QPointer<NodeGroup> _group;
    QThreadPool _pool;
    QTimer _release;
    // What each file held at the last evaluation (none yet: the first always evaluates).
    std::optional<QHash<QString, size_t>> _fingerprints;
    bool _reading = false;
    bool _readAgain = false;
};
