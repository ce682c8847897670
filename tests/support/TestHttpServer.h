#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>

#include <optional>

class QTcpSocket;

// A scripted HTTP server on the loopback interface, run by the test itself. Each path answers as
// its script says: a status, a declared length or none, the body in given chunks with pauses in
// between, an early close, a stall, a redirect. Every connection is closed after its answer.
class TestHttpServer : public QObject {
    Q_OBJECT

public:
    struct Script {
        int status = 200;
        QByteArray reason = "OK";
        // Content-Length to declare; by default the total of the chunks. -1 declares none.
        std::optional<qint64> declaredLength{};
        QList<QByteArray> chunks{};
        int pauseMs = 0;                // between chunks
        int firstByteDelayMs = 0;       // before the status line
        bool stallAfterHeaders = false; // send the headers, then nothing, never close
        bool stallForever = false;      // send nothing at all
        bool abortAfterChunks = false;  // reset the connection after the chunks
        bool endlessHeaders = false;    // header lines that never end
        QByteArray location{};          // Location header (for redirects)
        QList<QPair<QByteArray, QByteArray>> extraHeaders{};
    };

    explicit TestHttpServer(QObject *parent = nullptr);
    ~TestHttpServer() override;

    void route(const QByteArray &path, const Script &script) { _routes.insert(path, script); }
    // A plain 200 answer with the body in one piece.
    void serve(const QByteArray &path, const QByteArray &body) { route(path, {.chunks = {body}}); }
    // Headers that promise 100 bytes, then nothing: a transfer that stays under way.
    void stall(const QByteArray &path)
    {
        route(path, {.declaredLength = 100, .stallAfterHeaders = true});
    }
    QString url(const QByteArray &path) const;
    QString baseUrl() const
    {
        return QStringLiteral("http://127.0.0.1:%1/").arg(_server.serverPort());
    }

    int requestCount(const QByteArray &path) const { return _requests.value(path); }
    // The request headers of the last request for the path, names in lower case.
    QHash<QByteArray, QByteArray> lastHeaders(const QByteArray &path) const
    {
        return _lastHeaders.value(path);
    }
    // Answers every nth request, whatever its path, with 500 instead (0 turns this off).
    void setFailEvery(int n) { _failEvery = n; }
    int totalRequests() const { return _total; }

    static QByteArray bytes(int size, char seed = 'a');
    // A body of that size that passes for a picture (a PNG signature, then bytes()).
    static QByteArray picture(int size);

private:
    struct Connection {
        QPointer<QTcpSocket> socket;
        QByteArray request;
        bool answered = false;
    };

    void accept();
    void readRequest(QTcpSocket *socket);
    void answer(QTcpSocket *socket, const QByteArray &path);
    void sendChunks(QPointer<QTcpSocket> socket, Script script, int index);
    // Keeps the socket's send buffer topped up with the same block until the peer goes away.
    void stream(QPointer<QTcpSocket> socket, const QByteArray &block);

    QTcpServer _server;
    QHash<QByteArray, Script> _routes;
    QHash<QByteArray, int> _requests;
    QHash<QByteArray, QHash<QByteArray, QByteArray>> _lastHeaders;
    QHash<QTcpSocket *, QByteArray> _buffers;
    int _failEvery = 0;
    int _total = 0;
};

Q_DECLARE_METATYPE(TestHttpServer::Script)
