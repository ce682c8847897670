#include "TestTlsServer.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>

TestTlsServer::TestTlsServer(QObject *parent) : QObject(parent)
{
    QFile certificate(QStringLiteral(VANTOREL_FIXTURES_DIR "/tls/loopback.crt"));
    QFile key(QStringLiteral(VANTOREL_FIXTURES_DIR "/tls/loopback.key"));
    if (!certificate.open(QIODevice::ReadOnly) || !key.open(QIODevice::ReadOnly))
        qFatal("test certificate missing");
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(certificate.readAll()));
    configuration.setPrivateKey(QSslKey(key.readAll(), QSsl::Rsa));
    _server.setSslConfiguration(configuration);
    // Connections go through their handshake on their own; nothing is ever served.
    if (!_server.listen(QHostAddress::LocalHost, 0))
        qFatal("test TLS server cannot listen on the loopback interface");
}

QString TestTlsServer::url(const QString &path) const
{
    return QStringLiteral("https://127.0.0.1:%1/%2").arg(_server.serverPort()).arg(path);
}
