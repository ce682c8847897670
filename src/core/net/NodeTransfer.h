#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QFutureWatcher>
#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>

class AtomicFile;
class QNetworkReply;
class QTimer;

// One download of a node's data: the request, the bytes written to the data file's replacement
// as they arrive, the checks once they are all in (something came, as much as was declared, the
// kind of file the node expects) and the replacement of the data file. It tells its node what
// happens through its signals; the node keeps the status, the schedule and the reports. Every
// failure comes with its reason, worded as the end of the activity log's line
// "Download of "name" Failed: reason".
//
// Its signals arrive from inside the reply's own signals, and the node may reset() the transfer
// while it handles one; the transfer touches nothing after a signal that could lead to that.
class NodeTransfer : public QObject {
    Q_OBJECT

public:
    struct Request {
        QString sourceURL;
        QString filePath;
        int fileType = 0;
        // Accept a length that differs from the declared one (or a length never declared).
        bool overrideDataMismatch = false;
        // How long the server may stay silent before the transfer fails.
        int timeoutMilliseconds = 0;
        // "identity" asks for the bytes as they are, so that the declared length counts the
        // bytes delivered; a node that unpacks its data itself may ask for "gzip".
        QByteArray acceptEncoding = "identity";
        // A last check of the whole body before it replaces the data file (it may rewrite the
        // body, to unpack it): empty to go on, otherwise the failure's reason.
        std::function<QString(const QByteArray &contentEncoding, AtomicFile &data)> finalCheck;
    };
    enum class Start { Started, NotHttpAddress, NoConnection };

    explicit NodeTransfer(QObject *parent = nullptr);
    ~NodeTransfer() override;

    // Sends the request; nothing is under way unless it says Started.
    Start start(const Request &request);
    bool isActive() const { return _active; }
    // Stops the network side at once: no signal comes after this. The data file is untouched.
    void abort();
    // Once arrived() was signalled: the checks, then the data file replaced if they pass, on the
    // thread that writes it. concluded() tells how it ended: at once when a check fails, once the
    // data file is in place otherwise.
    void conclude();
    // Ends the transfer and forgets it; isActive() is false from here on.
    void reset();

    static QString notHttpAddressReason(const QString &address);

    // A transfer that grows past this is stopped: a broken or hostile server must not be able to
    // fill the disk, and no real image or bulletin comes near it.
    static constexpr qint64 kMaximumDataSize = qint64(256) * 1024 * 1024;
    static constexpr qint64 kReadBufferSize = qint64(1) * 1024 * 1024;
    // The most taken from the network layer in one turn of the event loop; more waits for the
    // next turn.
    static constexpr qint64 kSliceSize = qint64(256) * 1024;

signals:
    // The answer's headers came; the bytes are next.
    void responded();
    // The whole percentage of the declared length received so far changed (only when a length
    // above 0 was declared).
    void progressed(int percent);
    // The server has sent everything; conclude() says whether it is good.
    void arrived();
    // The transfer failed on the way; it has stopped.
    void failed(const QString &reason);
    // After conclude(): empty when the data file was replaced, otherwise the reason it was not.
    void concluded(const QString &problem);

private:
    void receiveResponse();
    void receiveData();
    void receiveMore();
    void finishReply();
    void checkSilence();
    void commitDone();
    void fail(const QString &description);

    Request _request;
    bool _active = false;
    QPointer<QNetworkReply> _reply;
    // The bytes of the transfer, written as they arrive.
    std::unique_ptr<AtomicFile> _data;
    // The first bytes of the same answer, kept for the content check at the end.
    QByteArray _firstBytes;
    qint64 _bytesReceived = 0;
    qint64 _expectedContentLength = 0;
    int _percent = -1;
    // A slice is left for the next turn of the event loop (receiveMore() is on its way); and the
    // reply finished while bytes were still waiting, so its end is handled once they are written.
    bool _moreWaiting = false;
    bool _endWaiting = false;
    // The silence is measured from the last sign of life; the timer only looks at it now and then,
    // so that a delivery costs no more than reading this clock.
    QTimer *_silenceTimer = nullptr;
    QElapsedTimer _lastActivity;
    // The replacement of the data file, under way on the writing thread.
    QFutureWatcher<bool> _commit;
    bool _committing = false;
};
