#include "core/now/NowSummaryLoader.h"

#include "core/now/NowSummary.h"
#include "core/util/Clock.h"

NowSummaryLoader::NowSummaryLoader(QObject *parent) : QObject(parent)
{
    _pool.setMaxThreadCount(1);
}

NowSummaryLoader::~NowSummaryLoader()
{
    _pool.waitForDone();
}

void NowSummaryLoader::request(const QList<std::pair<QString, QString>> &files)
{
    const int request = _newest.fetchAndAddOrdered(1) + 1;
    const qint64 now = Clock::now().toSecsSinceEpoch();
    _pool.start([this, request, now, files] {
        if (_newest.loadAcquire() != request)
            return;
        QStringList problems;
        const NowSummary::Data data = NowSummary::readFiles(files, &problems);
        const QJsonObject summary = NowSummary::summarize(data, now);
        const QStringList texts = NowSummary::messageTexts(data);
        // Queued to the loader's thread; a loader that goes first takes the call with it.
        QMetaObject::invokeMethod(
            this,
            [this, request, summary, texts, problems] {
                if (_newest.loadAcquire() == request)
                    emit loaded(summary, texts, problems);
            },
            Qt::QueuedConnection);
    });
}
