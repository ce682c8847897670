#include "core/watch/WatchService.h"

#include "core/log/LogSink.h"
#include "core/now/AuroraGrid.h"
#include "core/now/NowFormat.h"
#include "core/sources/Node.h"
#include "core/sources/NodeGroup.h"
#include "core/util/Clock.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

struct WatchService::Input {
    NowSummary::Data data;
    std::optional<AuroraGrid> aurora;
    QHash<QString, size_t> fingerprints;
    QStringList problems;
};

WatchService::WatchService(QSettings &store, LogSink *log, SettingsSource settings, QObject *parent)
    : QObject(parent), _watcher(store, log), _log(log), _settings(std::move(settings))
{
    _pool.setMaxThreadCount(1);
    _release.setSingleShot(true);
    connect(&_release, &QTimer::timeout, this, &WatchService::releaseHeld);
}

WatchService::~WatchService()
{
    // The read posts its answer to this object; it must be over before the object goes.
    _pool.waitForDone();
}

void WatchService::watchGroup(NodeGroup *group)
{
    _group = group;
    connect(group, &NodeGroup::nodeDataLoaded, this, [this](Node *node) {
        if (Watcher::kindsRead().contains(node->dataKind()))
            evaluateSoon();
    });
}

QList<std::pair<QString, QString>> WatchService::files() const
{
    QList<std::pair<QString, QString>> list;
    if (!_group)
        return list;
    const QStringList kinds = Watcher::kindsRead();
    for (const Node *node : _group->allNodes()) {
        if (kinds.contains(node->dataKind()))
            list.append({node->dataKind(), node->filePath()});
    }
    return list;
}

std::shared_ptr<WatchService::Input>
WatchService::read(const QList<std::pair<QString, QString>> &files)
{
    auto input = std::make_shared<Input>();
    for (const auto &[kind, path] : files) {
        if (!QFileInfo::exists(path))
            continue;
        QFile file(path);
        QString problem = QStringLiteral("cannot be read");
        bool ok = false;
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.readAll();
            input->fingerprints.insert(path, qHash(bytes));
            if (kind == QLatin1String("ovation")) {
                input->aurora = NowFormat::parseOvation(bytes, &problem);
                ok = input->aurora.has_value();
            } else if (std::optional<NowSamples> samples =
                           NowFormat::parse(kind, bytes, &problem)) {
                NowSamples &kept = input->data[kind];
                kept.append(*samples);
                std::stable_sort(kept.begin(), kept.end(),
                                 [](const auto &a, const auto &b) { return a.time < b.time; });
                ok = true;
            }
        }
        if (!ok)
            input->problems.append(
                QStringLiteral("The watcher could not read \"%1\": %2").arg(path, problem));
    }
    return input;
}

QList<WatchEvent> WatchService::evaluateNow()
{
    const std::shared_ptr<Input> input = read(files());
    _fingerprints = input->fingerprints;
    return apply(*input);
}

void WatchService::evaluateSoon()
{
    if (_reading) {
        _readAgain = true;
        return;
    }
    _reading = true;
    _pool.start([this, files = files()] {
        std::shared_ptr<Input> input = read(files);
        QMetaObject::invokeMethod(
            this, [this, input] { readFinished(input); }, Qt::QueuedConnection);
    });
}

void WatchService::readFinished(const std::shared_ptr<Input> &input)
{
    _reading = false;
    const bool changed = !_fingerprints || *_fingerprints != input->fingerprints;
    _fingerprints = input->fingerprints;
    if (changed) {
        const QList<WatchEvent> events = apply(*input);
        if (!events.isEmpty())
            emit eventsReady(events);
    }
    if (_readAgain) {
        _readAgain = false;
        evaluateSoon();
    }
}

QList<WatchEvent> WatchService::apply(const Input &input)
{
    if (_log) {
        for (const QString &problem : input.problems)
            _log->addErrorToLog(problem);
    }
    const QList<WatchEvent> events = _watcher.evaluate(
        input.data, input.aurora ? &*input.aurora : nullptr, _settings(), Clock::now());
    scheduleRelease();
    return events;
}

void WatchService::releaseHeld()
{
    const QList<WatchEvent> events = _watcher.releaseHeld(_settings(), Clock::now());
    if (!events.isEmpty())
        emit eventsReady(events);
    scheduleRelease();
}

void WatchService::scheduleRelease()
{
    const QDateTime now = Clock::now();
    if (const std::optional<QDateTime> until = _watcher.heldUntil(_settings(), now))
        _release.start(int(std::clamp<qint64>(now.msecsTo(*until) + 1000, 0, 86400000)));
    else
        _release.stop();
}
