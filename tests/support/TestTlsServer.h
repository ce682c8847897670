#pragma once

#include <QObject>
#include <QSslServer>

// A TLS server on the loopback interface presenting a self-signed certificate that nobody
// trusts: every connection to it must fail its handshake.
class TestTlsServer : public QObject {
    Q_OBJECT

public:
    explicit TestTlsServer(QObject *parent = nullptr);
    QString url(const QString &path) const;

private:
    QSslServer _server;
};
