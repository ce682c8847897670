#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QUrl>

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
        std::optional<qint64> declaredLength;
        QList<QByteArray> chunks;
        int pauseMs = 0;          // between chunks
        int firstByteDelayMs = 0; // before the status line
        bool stallAfterHeaders = false; // send the headers, then nothing, never close
        bool stallForever = false;      // send nothing at all
        bool abortAfterChunks = false;  // reset the connection after the chunks
        QByteArray location;            // Location header (for redirects)
        QList<QPair<QByteArray, QByteArray>> extraHeaders;
    };

    explicit TestHttpServer(QObject *parent = nullptr);
    ~TestHttpServer() override;

    void route(const QByteArray &path, const Script &script);
    // A plain 200 answer with the body in one piece.
    void serve(const QByteArray &path, const QByteArray &body);
    QString url(const QByteArray &path) const;
    QString baseUrl() const;

    int requestCount(const QByteArray &path) const { return _requests.value(path); }
    // The request headers of the last request for the path, names in lower case.
    QHash<QByteArray, QByteArray> lastHeaders(const QByteArray &path) const
    {
        return _lastHeaders.value(path);
    }
    int openConnections() const;

    static QByteArray bytes(int size, char seed = 'a');

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
    void finish(QPointer<QTcpSocket> socket, const Script &script);

    QTcpServer _server;
    QHash<QByteArray, Script> _routes;
    QHash<QByteArray, int> _requests;
    QHash<QByteArray, QHash<QByteArray, QByteArray>> _lastHeaders;
    QHash<QTcpSocket *, QByteArray> _buffers;
};

Q_DECLARE_METATYPE(TestHttpServer::Script)
