#include "TestHttpServer.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

TestHttpServer::TestHttpServer(QObject *parent) : QObject(parent)
{
    connect(&_server, &QTcpServer::newConnection, this, &TestHttpServer::accept);
    if (!_server.listen(QHostAddress::LocalHost, 0))
        qFatal("test server cannot listen on the loopback interface");
}

TestHttpServer::~TestHttpServer()
{
    // The sockets die with the listening server; they must not report back to a half-destroyed
    // object on the way.
    for (QTcpSocket *socket : _buffers.keys()) {
        socket->disconnect(this);
        socket->abort();
    }
}

QByteArray TestHttpServer::bytes(int size, char seed)
{
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = char(seed + i % 23);
    return data;
}

QByteArray TestHttpServer::picture(int size)
{
    const QByteArray signature("\x89PNG\r\n\x1A\n", 8);
    return signature + bytes(std::max(0, size - int(signature.size())));
}

QString TestHttpServer::url(const QByteArray &path) const
{
    return baseUrl() + QString::fromLatin1(path.startsWith('/') ? path.mid(1) : path);
}

void TestHttpServer::accept()
{
    while (QTcpSocket *socket = _server.nextPendingConnection()) {
        _buffers.insert(socket, QByteArray());
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readRequest(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            _buffers.remove(socket);
            socket->deleteLater();
        });
    }
}

void TestHttpServer::readRequest(QTcpSocket *socket)
{
    auto it = _buffers.find(socket);
    if (it == _buffers.end())
        return;
    it->append(socket->readAll());
    const qsizetype end = it->indexOf("\r\n\r\n");
    if (end < 0)
        return;
    const QList<QByteArray> lines = it->left(end).split('\n');
    it->clear();
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    const QByteArray path = requestLine.value(1);
    QHash<QByteArray, QByteArray> headers;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        if (colon > 0)
            headers.insert(lines[i].left(colon).trimmed().toLower(),
                           lines[i].mid(colon + 1).trimmed());
    }
    _requests[path] += 1;
    _lastHeaders.insert(path, headers);
    answer(socket, path);
}

void TestHttpServer::answer(QTcpSocket *socket, const QByteArray &path)
{
    ++_total;
    Script script =
        _routes.value(path, {.status = 404, .reason = "Not Found", .chunks = {"no such file"}});
    if (_failEvery > 0 && _total % _failEvery == 0)
        script = {.status = 500, .reason = "Internal Server Error", .chunks = {"try again later"}};
    if (script.stallForever)
        return;

    QPointer<QTcpSocket> guarded(socket);
    if (script.endlessHeaders) {
        socket->write("HTTP/1.1 200 OK\r\n");
        stream(guarded, "X-Padding: " + QByteArray(1000, 'h') + "\r\n");
        return;
    }
    const auto sendHead = [this, guarded, script] {
        if (!guarded)
            return;
        QByteArray head = "HTTP/1.1 " + QByteArray::number(script.status) + ' ' + script.reason +
                          "\r\nConnection: close\r\nContent-Type: application/octet-stream\r\n";
        const qint64 declared = script.declaredLength.value_or(script.chunks.join().size());
        if (declared >= 0)
            head += "Content-Length: " + QByteArray::number(declared) + "\r\n";
        if (!script.location.isEmpty())
            head += "Location: " + script.location + "\r\n";
        for (const auto &header : script.extraHeaders)
            head += header.first + ": " + header.second + "\r\n";
        guarded->write(head + "\r\n");
        guarded->flush();
        if (!script.stallAfterHeaders)
            sendChunks(guarded, script, 0);
    };
    QTimer::singleShot(script.firstByteDelayMs, this, sendHead);
}

void TestHttpServer::sendChunks(QPointer<QTcpSocket> socket, Script script, int index)
{
    if (!socket)
        return;
    if (index < script.chunks.size()) {
        socket->write(script.chunks.at(index));
        socket->flush();
        const int pause = index + 1 < script.chunks.size() ? script.pauseMs : 0;
        QTimer::singleShot(pause, this, [=, this] { sendChunks(socket, script, index + 1); });
    } else if (script.abortAfterChunks) {
        socket->abort();
    } else {
        socket->disconnectFromHost();
    }
}

void TestHttpServer::stream(QPointer<QTcpSocket> socket, const QByteArray &block)
{
    if (!socket)
        return;
    const auto topUp = [socket, block] {
        while (socket && socket->state() == QAbstractSocket::ConnectedState &&
               socket->bytesToWrite() < 4 * block.size())
            socket->write(block);
    };
    connect(socket, &QTcpSocket::bytesWritten, socket, topUp);
    topUp();
}
