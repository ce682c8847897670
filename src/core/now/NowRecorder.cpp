#include "core/now/NowRecorder.h"

#include "core/log/LogSink.h"
#include "core/now/NowChartQuery.h"
#include "core/now/NowFormat.h"
#include "core/now/NowHistory.h"
#include "core/settings/Preferences.h"
#include "core/util/Clock.h"

#include <QAtomicInt>
#include <QFile>
#include <QThread>

#include <memory>

// Lives on the recorder's thread and owns the history's connection there. Its answers go back to
// the recorder as queued calls: the recorder outlives the thread (its destructor waits for it),
// and calls still queued for a recorder that goes are dropped with it.
class NowRecorder::Worker : public QObject, public LogSink {
public:
    Worker(const QString &path, NowRecorder *recorder) : _path(path), _recorder(recorder) {}

    NowHistory &history()
    {
        if (!_history)
            _history = std::make_unique<NowHistory>(_path, this);
        return *_history;
    }
    void finish() { _history.reset(); }

    void addErrorToLog(const QString &message) override { tell(message); }
    void addMessageToLog(const QString &message) override { tell(message); }

    void tell(const QString &message)
    {
        answer([r = _recorder, message] { emit r->problem(message); });
    }
    template <typename Function> void answer(Function function)
    {
        QMetaObject::invokeMethod(_recorder, std::move(function), Qt::QueuedConnection);
    }

    QString _path;
    NowRecorder *_recorder;
    std::unique_ptr<NowHistory> _history;
    // The newest chart request; the older ones still queued are skipped.
    QAtomicInt _chartRequest;
};

NowRecorder::NowRecorder(const QString &databasePath, QObject *parent)
    : QObject(parent), _thread(new QThread(this)), _worker(new Worker(databasePath, this))
{
    _thread->setObjectName(QStringLiteral("History"));
    _worker->moveToThread(_thread);
    _thread->start(QThread::LowPriority);
}

NowRecorder::~NowRecorder()
{
    // Queued behind every request still waiting, so those are carried out first.
    QMetaObject::invokeMethod(
        _worker,
        [w = _worker] {
            w->finish();
            QThread::currentThread()->quit();
        },
        Qt::QueuedConnection);
    _thread->wait();
    delete _worker;
}

void NowRecorder::record(const QString &kind, const QString &filePath)
{
    // The aurora forecast is a map of the next hour, not a measurement: 65,160 points every half
    // hour would swell the history by gigabytes a year, and no chart shows it.
    if (kind == QLatin1String("ovation"))
        return;
    const qint64 now = Clock::now().toSecsSinceEpoch();
    const int days = Preferences::shared().historyRetentionDays();
    QMetaObject::invokeMethod(
        _worker,
        [w = _worker, kind, filePath, now, days] {
            QFile file(filePath);
            QString problem = file.errorString();
            std::optional<NowSamples> samples;
            if (file.open(QIODevice::ReadOnly))
                samples = NowFormat::parse(kind, file.readAll(), &problem);
            if (!samples) {
                w->tell(
                    QStringLiteral("The history could not read \"%1\": %2").arg(filePath, problem));
                return;
            }
            const int written = w->history().merge(kind, *samples, now, days);
            if (written >= 0)
                w->answer([r = w->_recorder, kind, written] { emit r->recorded(kind, written); });
        },
        Qt::QueuedConnection);
}

int NowRecorder::requestChartData(qint64 span, int columns)
{
    const qint64 now = Clock::now().toSecsSinceEpoch();
    const int request = _worker->_chartRequest.fetchAndAddOrdered(1) + 1;
    QMetaObject::invokeMethod(
        _worker,
        [w = _worker, request, now, span, columns] {
            if (w->_chartRequest.loadAcquire() != request)
                return;
            NowChartData data = NowChartQuery::run(w->history(), now, span, columns);
            data.request = request;
            w->answer([r = w->_recorder, data = std::move(data)] { emit r->chartDataReady(data); });
        },
        Qt::QueuedConnection);
    return request;
}

void NowRecorder::clearHistory()
{
    QMetaObject::invokeMethod(
        _worker,
        [w = _worker] {
            const bool ok = w->history().clear();
            w->answer([r = w->_recorder, ok] { emit r->historyCleared(ok); });
        },
        Qt::QueuedConnection);
}
