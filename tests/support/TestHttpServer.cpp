#include "TestHttpServer.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

TestHttpServer::TestHttpServer(QObject *parent) : QObject(parent)
{
    connect(&_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = _server.nextPendingConnection()) {
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        }
    });
    if (!_server.listen(QHostAddress::LocalHost, 0))
        qFatal("test server cannot listen on the loopback interface");
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

void TestHttpServer::answer(QTcpSocket *socket)
{
    const QByteArray request = socket->peek(socket->bytesAvailable());
    const qsizetype end = request.indexOf("\r\n\r\n");
    if (end < 0)
        return; // until the whole head is there
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);
    const QByteArray path = request.left(request.indexOf('\r')).split(' ').value(1);
    _requests[path] += 1;
    ++_total;
    _lastRequests.insert(path, request.left(end + 2));
    Script script =
        _routes.value(path, {.status = 404, .reason = "Not Found", .chunks = {"no such file"}});
    if (_failEvery > 0 && _total % _failEvery == 0)
        script = {.status = 500, .reason = "Internal Server Error", .chunks = {"try again later"}};
    if (script.stallForever)
        return;

    QPointer<QTcpSocket> guarded(socket);
    if (script.endlessHeaders) {
        // Keeps the send buffer topped up with header lines until the peer goes away.
        const QByteArray line = "X-Padding: " + QByteArray(1000, 'h') + "\r\n";
        const auto topUp = [guarded, line] {
            while (guarded && guarded->state() == QAbstractSocket::ConnectedState &&
                   guarded->bytesToWrite() < 4 * line.size())
                guarded->write(line);
        };
        socket->write("HTTP/1.1 200 OK\r\n");
        connect(socket, &QTcpSocket::bytesWritten, socket, topUp);
        topUp();
        return;
    }
    QByteArray head = "HTTP/1.1 " + QByteArray::number(script.status) + ' ' + script.reason +
                      "\r\nConnection: close\r\nContent-Type: application/octet-stream\r\n";
    const qint64 declared = script.declaredLength.value_or(script.chunks.join().size());
    if (declared >= 0)
        head += "Content-Length: " + QByteArray::number(declared) + "\r\n";
    if (!script.location.isEmpty())
        head += "Location: " + script.location + "\r\n";
    for (const auto &[name, value] : script.extraHeaders)
        head += name + ": " + value + "\r\n";
    socket->write(head + "\r\n");
    if (!script.stallAfterHeaders)
        sendChunks(guarded, script, 0);
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
