#include "RecordingDelegate.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/sources/Node.h"

#include <QSslKey>
#include <QSslServer>
#include <QTimer>

#include <arpa/inet.h>
#include <atomic>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

// Answers every request with the given head, then data for as long as the client reads. On a
// thread of its own it can outpace the client, as a real hostile server would.
class StreamingServer {
public:
    explicit StreamingServer(const QByteArray &head)
    {
        _listener = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        if (::bind(_listener, reinterpret_cast<sockaddr *>(&address), length) != 0 ||
            ::listen(_listener, 4) != 0 ||
            ::getsockname(_listener, reinterpret_cast<sockaddr *>(&address), &length) != 0)
            qFatal("streaming server cannot listen");
        url = u"http://127.0.0.1:%1/stream"_s.arg(ntohs(address.sin_port));
        _thread = std::thread([this, head] {
            const QByteArray block = TestHttpServer::bytes(256 * 1024);
            for (int client; !_stop && (client = ::accept(_listener, nullptr, nullptr)) >= 0;
                 ::close(client)) {
                char request[4096];
                bool open = ::recv(client, request, sizeof(request), 0) >= 0 &&
                            ::send(client, head.constData(), size_t(head.size()), MSG_NOSIGNAL) > 0;
                while (open && !_stop)
                    open =
                        ::send(client, block.constData(), size_t(block.size()), MSG_NOSIGNAL) > 0;
            }
        });
    }
    ~StreamingServer()
    {
        _stop = true;
        ::shutdown(_listener, SHUT_RDWR);
        ::close(_listener);
        _thread.join();
    }

    QString url;

private:
    int _listener = -1;
    std::atomic<bool> _stop = false;
    std::thread _thread;
};

// A TLS server presenting a self-signed certificate that nobody trusts: every handshake fails.
std::unique_ptr<QSslServer> untrustedServer()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    const QString fixtures = QStringLiteral(VANTOREL_FIXTURES_DIR "/tls/loopback.");
    configuration.setLocalCertificate(QSslCertificate(TestEnvironment::readFile(fixtures + "crt")));
    configuration.setPrivateKey(QSslKey(TestEnvironment::readFile(fixtures + "key"), QSsl::Rsa));
    auto server = std::make_unique<QSslServer>();
    server->setSslConfiguration(configuration);
    if (configuration.localCertificate().isNull() || configuration.privateKey().isNull() ||
        !server->listen(QHostAddress::LocalHost, 0))
        qFatal("test TLS server cannot start");
    return server;
}

} // namespace

using Script = TestHttpServer::Script;

// Servers that misbehave on purpose. Each must end as one logged failure, the last good data file
// untouched, with the event loop still turning and memory bounded.
class TestHostile : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    // Each row is served by a thread of its own streaming after the given head, by a TLS server
    // (head "TLS"), or by the scripted server; a reason given is the exact failure text.
    void misbehavingServers_data()
    {
        columns<QByteArray, Script, QString>("head", "script", "reason");
        const auto row = [](const char *name, const char *head, const Script &script,
                            const QString &reason = {}) {
            QTest::newRow(name) << QByteArray(head) << script << reason;
        };
        const QByteArray megabyte = TestHttpServer::bytes(1'000'000);
        row("endless data", "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n", {},
            "The data grew past the 256 MB limit.");
        row("declares 4 GB", "HTTP/1.1 200 OK\r\nContent-Length: 4294967296\r\n\r\n", {},
            "The server announced more data than the 256 MB limit.");
        row("headers without end", "", {.endlessHeaders = true});
        row("redirect loop", "", {.status = 302, .reason = "Found", .chunks = {"again"}});
        row("reset in the middle of a body", "",
            {.declaredLength = 5'000'000,
             .chunks = {megabyte, megabyte},
             .pauseMs = 50,
             .abortAfterChunks = true});
        row("untrusted certificate", "TLS", {});
    }

    void misbehavingServers()
    {
        const QByteArray head = fetch<QByteArray>("head");
        Script script = fetch<Script>("script");
        std::unique_ptr<StreamingServer> streaming;
        std::unique_ptr<QSslServer> tls;
        QString url = _server.url("hostile");
        if (head == "TLS") {
            tls = untrustedServer();
            url = u"https://127.0.0.1:%1/image.png"_s.arg(tls->serverPort());
        } else if (!head.isEmpty()) {
            streaming = std::make_unique<StreamingServer>(head);
            url = streaming->url;
        } else if (script.status == 302) {
            script.location = url.toLatin1(); // to itself, for ever
        }
        _server.route("/hostile", script);
        Preferences::shared().setTimeoutSeconds(1.0f);
        const QString folder = TestEnvironment::makeFolder(u"data"_s);
        QVERIFY(TestEnvironment::writeFile(folder + "/kept.bin", "the last good copy"));

        RecordingDelegate delegate;
        auto node =
            Node::create(TestEnvironment::nodeDict(u"kept.bin"_s, u"Kept"_s, url, QString()),
                         &delegate, folder, false);
        int ticks = 0;
        QTimer probe;
        connect(&probe, &QTimer::timeout, this, [&ticks] { ++ticks; });
        probe.start(10);
        node->beginDownloadingData();
        QVERIFY2(QTest::qWaitFor([&] { return !node->isDownloading(); }, 120000),
                 "the transfer did not end");
        // A quarter of a gigabyte, or headers pouring in, take a while: the event loop must have
        // kept turning meanwhile.
        if (QTest::currentDataTag() == QLatin1String("endless data") || script.endlessHeaders)
            QVERIFY(ticks > 0);
        QCOMPARE(delegate.failures.size(), 1);
        const QString prefix = u"Download of \"Kept\" Failed: "_s;
        const QString reason = fetch<QString>("reason");
        if (reason.isEmpty())
            QVERIFY2(delegate.failures.first().startsWith(prefix) &&
                         delegate.failures.first().contains(url),
                     qPrintable(delegate.failures.first()));
        else
            QCOMPARE(delegate.failures.first(), prefix + reason + ' ' + url);
        QCOMPARE(node->itemStatus(), u"Err"_s);
        // No temporary file left behind, and the data file as it was.
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{"kept.bin"});
        QCOMPARE(TestEnvironment::readFile(folder + "/kept.bin"), QByteArray("the last good copy"));
        // Bounded: the bytes go to disk as they arrive, so memory holds what the network layer
        // buffers, far less than the quarter of a gigabyte the server sent.
        qint64 boundKilobytes = 160 * 1024;
#if defined(__SANITIZE_ADDRESS__)
        boundKilobytes += 256 * 1024; // AddressSanitizer keeps freed memory aside, up to 256 MB
#endif
        QVERIFY(TestEnvironment::processKilobytes("VmHWM") < boundKilobytes);
    }

private:
    TestHttpServer _server;
};

VANTOREL_TEST_CORE_MAIN(TestHostile)
#include "test_hostile.moc"
