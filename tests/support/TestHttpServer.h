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
// its script says; every connection is closed after its answer.
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
        bool stallAfterHeaders = false; // send the headers, then nothing, never close
        bool stallForever = false;      // send nothing at all
        bool abortAfterChunks = false;  // reset the connection after the chunks
        bool endlessHeaders = false;    // header lines that never end
        QByteArray location{};
        QList<std::pair<QByteArray, QByteArray>> extraHeaders{}; // name, value
    };

    explicit TestHttpServer(QObject *parent = nullptr);

    void route(const QByteArray &path, const Script &script) { _routes.insert(path, script); }
    void serve(const QByteArray &path, const QByteArray &body) { route(path, {.chunks = {body}}); }
    // Headers that promise 100 bytes, then nothing: a transfer that stays under way.
    void stall(const QByteArray &path)
    {
        route(path, {.declaredLength = 100, .stallAfterHeaders = true});
    }
    QString baseUrl() const
    {
        return QStringLiteral("http://127.0.0.1:%1/").arg(_server.serverPort());
    }
    QString url(const QByteArray &path) const
    {
        return baseUrl() + QString::fromLatin1(path.startsWith('/') ? path.mid(1) : path);
    }

    int requestCount(const QByteArray &path) const { return _requests.value(path); }
    // The request line and headers of the last request for the path, each line ending in CR LF.
    QByteArray lastRequest(const QByteArray &path) const { return _lastRequests.value(path); }
    // Answers every nth request, whatever its path, with 500 instead (0 turns this off).
    void setFailEvery(int n) { _failEvery = n; }
    int totalRequests() const { return _total; }

    static QByteArray bytes(int size, char seed = 'a');
    // A body of that size that passes for a picture (a PNG signature, then bytes()).
    static QByteArray picture(int size);

private:
    void answer(QTcpSocket *socket);
    void sendChunks(QPointer<QTcpSocket> socket, Script script, int index);

    QHash<QByteArray, Script> _routes;
    QHash<QByteArray, int> _requests;
    QHash<QByteArray, QByteArray> _lastRequests;
    int _failEvery = 0;
    int _total = 0;
    // Last, so that its sockets go first, while everything their signals reach is still there.
    QTcpServer _server;
};

Q_DECLARE_METATYPE(TestHttpServer::Script)
