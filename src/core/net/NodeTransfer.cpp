#include "core/net/NodeTransfer.h"

#include "core/net/AtomicFile.h"
#include "core/net/ContentCheck.h"
#include "core/net/NetworkAccess.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

#include <limits>

NodeTransfer::NodeTransfer(QObject *parent) : QObject(parent)
{
    connect(&_commit, &QFutureWatcherBase::finished, this, &NodeTransfer::commitDone);
}

NodeTransfer::~NodeTransfer()
{
    // A transfer still running must never call back into a node that is gone.
    reset();
}

QString NodeTransfer::notHttpAddressReason(const QString &address)
{
    return QStringLiteral("\"%1\" is not an http or https address").arg(address);
}

NodeTransfer::Start NodeTransfer::start(const Request &request)
{
    const QUrl url(request.sourceURL, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() ||
        (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
        return Start::NotHttpAddress;

    QNetworkRequest networkRequest(url);
    networkRequest.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                                QNetworkRequest::AlwaysNetwork);
    networkRequest.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // Never "gzip, deflate" left to Qt: Qt unpacks such an answer itself and hides the declared
    // length, so a body cut short would pass the length check.
    networkRequest.setRawHeader("Accept-Encoding", request.acceptEncoding);
    networkRequest.setHeader(QNetworkRequest::UserAgentHeader, NetworkAccess::userAgent());

    QNetworkReply *reply = NetworkAccess::manager()->get(networkRequest);
    if (!reply)
        return Start::NoConnection;

    // Let the network layer hold only a little before we take it: a fast server then waits for
    // us instead of filling memory, and each delivery stays small enough not to hold up the
    // event loop.
    reply->setReadBufferSize(kReadBufferSize);
    _request = request;
    _reply = reply;
    _data = std::make_unique<AtomicFile>(request.filePath);
    connect(reply, &QNetworkReply::metaDataChanged, this, &NodeTransfer::receiveResponse);
    connect(reply, &QNetworkReply::readyRead, this, &NodeTransfer::receiveData);
    connect(reply, &QNetworkReply::finished, this, &NodeTransfer::finishReply);

    if (!_silenceTimer) {
        _silenceTimer = new QTimer(this);
        _silenceTimer->setSingleShot(true);
        connect(_silenceTimer, &QTimer::timeout, this, &NodeTransfer::checkSilence);
    }
    _lastActivity.start();
    _silenceTimer->start(_request.timeoutMilliseconds);
    _active = true;
    return Start::Started;
}

void NodeTransfer::receiveResponse()
{
    if (!_reply)
        return;
    _lastActivity.restart();

    const QVariant declared = _reply->header(QNetworkRequest::ContentLengthHeader);
    bool ok = false;
    const qint64 length = declared.toLongLong(&ok);
    _expectedContentLength = (declared.isValid() && ok && length >= 0) ? length : -1;
    // Bytes of an earlier answer in the same transfer are dropped (the count is not).
    _data->clear();
    // The server's word on when the file last changed dates the data file; without it, the
    // download does.
    _data->setModificationTime(_reply->header(QNetworkRequest::LastModifiedHeader).toDateTime());
    _firstBytes.clear();
    _percent = -1;

    if (_expectedContentLength > kMaximumDataSize) {
        fail(QStringLiteral("The server announced more data than the 256 MB limit."));
        return;
    }
    emit responded();
}

void NodeTransfer::receiveData()
{
    if (!_reply || !_data)
        return;
    _lastActivity.restart();

    // From the network layer's buffer straight into the data file's, which hands the bytes to the
    // thread that writes them: one copy, no waiting for the disk here. At most one slice per turn
    // of the event loop: the network layer goes on reading while the interface is busy, and Qt
    // then hands over all that piled up in one delivery per reply, up to the read buffer's size;
    // with several transfers running, taking all of it at once would hold up the interface in
    // turn. The rest is read on the next turn, after what else waits. Whatever the network layer
    // holds beyond the read buffer's size is taken at once all the same: Qt does not always keep
    // to that size (now and then a fast server's answer piles up in it without limit, also after
    // the answer has begun), and memory must stay bounded whatever it does.
    qint64 received = 0;
    for (;;) {
        const qint64 available = _reply->bytesAvailable();
        const qint64 wanted = received < kSliceSize
                                  ? std::min(available, kSliceSize - received)
                                  : std::min(available - kReadBufferSize, kSliceSize);
        if (wanted <= 0)
            break;
        if (_data->size() + wanted > kMaximumDataSize) {
            fail(QStringLiteral("The data grew past the 256 MB limit."));
            return;
        }
        if (_firstBytes.size() < ContentCheck::kPrefixSize)
            _firstBytes.append(
                _reply->peek(std::min(wanted, ContentCheck::kPrefixSize - _firstBytes.size())));
        const qint64 count = _data->appendFrom(*_reply, wanted);
        if (count <= 0)
            break;
        received += count;
    }
    // Handing the bytes on may have waited for the disk (see AtomicFile): that was no silence of
    // the server's.
    if (received > 0)
        _lastActivity.restart();
    if (!_moreWaiting && _reply->bytesAvailable() > 0) {
        _moreWaiting = true;
        QMetaObject::invokeMethod(this, &NodeTransfer::receiveMore, Qt::QueuedConnection);
    }
    if (received == 0 || _expectedContentLength <= 0)
        return;

    _bytesReceived += received;
    const double percent = double(_bytesReceived) / double(_expectedContentLength) * 100.0;
    const int shown = int(std::min(percent, double(std::numeric_limits<int>::max())));
    // A status that says the same again is no news: only a new whole percentage is told.
    if (shown == _percent)
        return;
    _percent = shown;
    emit progressed(shown);
}

void NodeTransfer::receiveMore()
{
    // Stopped or reset since it was asked for: nothing more is read.
    if (!_moreWaiting)
        return;
    _moreWaiting = false;
    QNetworkReply *reply = _reply;
    if (!reply)
        return;
    receiveData();
    if (_endWaiting && _reply == reply && !_moreWaiting)
        finishReply();
}

void NodeTransfer::finishReply()
{
    QNetworkReply *reply = _reply;
    if (!reply)
        return;
    _silenceTimer->stop();

    // Bytes that arrived together with the end of the transfer; when they are more than a slice,
    // the end waits for the last of them.
    _endWaiting = false;
    if (reply->bytesAvailable() > 0 && !_moreWaiting)
        receiveData();
    if (!_active || _reply != reply)
        return;
    if (_moreWaiting) {
        _endWaiting = true;
        return;
    }

    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError || status >= 400) {
        QString description = reply->errorString();
        if (status >= 400) {
            // An error page is not data: say what the server answered instead of Qt's wording.
            const QString reason =
                reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
            description =
                reason.isEmpty()
                    ? QStringLiteral("The server answered %1.").arg(status)
                    : QStringLiteral("The server answered %1 %2.").arg(status).arg(reason);
        }
        fail(description);
        return;
    }
    emit arrived();
}

void NodeTransfer::checkSilence()
{
    if (!_reply)
        return;
    const qint64 silent = _lastActivity.elapsed();
    if (silent < _request.timeoutMilliseconds) {
        _silenceTimer->start(int(_request.timeoutMilliseconds - silent));
        return;
    }
    fail(QStringLiteral("The request timed out."));
}

void NodeTransfer::fail(const QString &description)
{
    const QString failingAddress = _reply ? _reply->url().toString() : QString();
    const QString address = failingAddress.isEmpty() ? _request.sourceURL : failingAddress;
    // Stop the transfer before anyone hears of the failure, so nothing more arrives from it.
    abort();
    emit failed(description + QLatin1Char(' ') + address);
}

void NodeTransfer::abort()
{
    _moreWaiting = false;
    _endWaiting = false;
    _committing = false;
    if (_silenceTimer)
        _silenceTimer->stop();
    if (_reply) {
        _reply->disconnect(this);
        _reply->abort();
    }
}

void NodeTransfer::conclude()
{
    QString problem;
    if (_data->isEmpty())
        problem =
            QStringLiteral("data length is zero (the file may not be available at this time)");
    else if (_data->size() != _expectedContentLength && !_request.overrideDataMismatch)
        problem = QStringLiteral("data length does not match expected size (the file may not be "
                                 "available at this time)");
    else if (!ContentCheck::isExpected(_request.fileType, _firstBytes))
        problem = QStringLiteral("the server sent something other than the expected file");
    else if (_request.finalCheck) {
        const QByteArray encoding = _reply ? _reply->rawHeader("Content-Encoding") : QByteArray();
        problem = _request.finalCheck(encoding, *_data);
    }
    if (!problem.isEmpty()) {
        emit concluded(problem);
        return;
    }
    _committing = true;
    const QFuture<bool> committed = _data->commitInBackground();
    _commit.setFuture(committed);
    // Written in place, it is done already: the end comes now, as it would with the file
    // written here.
    if (committed.isFinished())
        commitDone();
}

void NodeTransfer::commitDone()
{
    // Reset or stopped since: nobody waits for this any more.
    const QFuture<bool> result = _commit.future();
    if (!_committing || !result.isFinished())
        return;
    _committing = false;
    const bool committed = !result.isCanceled() && result.resultCount() > 0 && result.result();
    emit concluded(committed ? QString() : QStringLiteral("unable to write file"));
}

void NodeTransfer::reset()
{
    _moreWaiting = false;
    _endWaiting = false;
    _committing = false;
    if (_silenceTimer)
        _silenceTimer->stop();
    if (QNetworkReply *reply = _reply) {
        _reply = nullptr;
        reply->disconnect(this);
        // Deleting a reply that is still running aborts it; deferring the deletion keeps this safe
        // when we are inside one of the reply's own signals.
        reply->deleteLater();
    }
    _data.reset();
    _firstBytes.clear();
    _bytesReceived = 0;
    _expectedContentLength = 0;
    _percent = -1;
    _active = false;
}
