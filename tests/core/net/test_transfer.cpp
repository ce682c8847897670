#include "RecordingDelegate.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/sources/Node.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

// One node's transfer against a scripted server on the loopback interface: the status texts, the
// three checks, the atomic replacement, the failure texts and the order of the callbacks.
class TestTransfer : public QObject {
    Q_OBJECT

private slots:
    void init();

    void progressInChunks();
    void failuresKeepTheOldFile_data();
    void failuresKeepTheOldFile();
    void undeclaredLengthWithOverride();
    void redirectFollowed();
    void activeTransferIsNotCutOff();
    void onlyHttpAndHttps_data();
    void onlyHttpAndHttps();
    void dataFolderGone_data();
    void dataFolderGone();
    void cancelRunningTransfer();
    void cancelIdleNode();
    void secondStartDoesNothing();
    void destroyedWhileRunning();
    void requestHeadersAndNoCache();
    void notDueWhileDownloading();

private:
    std::unique_ptr<Node> make(const QByteArray &path, NodeDelegate *delegate,
                               bool overrideMismatch = false)
    {
        QVariantMap dict =
            TestEnvironment::nodeDict(QStringLiteral("data.bin"), QStringLiteral("Probe"),
                                      _server->baseUrl(), QString::fromLatin1(path));
        return Node::create(dict, delegate, _folder, overrideMismatch);
    }
    // Runs the node's transfer to its end (or until the wait runs out).
    static bool runToEnd(Node *node, int ms = 5000)
    {
        node->beginDownloadingData();
        return QTest::qWaitFor([node] { return !node->isDownloading(); }, ms);
    }
    QByteArray fileContents() const
    {
        QFile file(QDir(_folder).filePath(QStringLiteral("data.bin")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    void writeOldFile()
    {
        QFile file(QDir(_folder).filePath(QStringLiteral("data.bin")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("the last good copy");
    }

    std::unique_ptr<TestHttpServer> _server;
    QString _folder;
};

void TestTransfer::init()
{
    TestEnvironment::resetState();
    _server = std::make_unique<TestHttpServer>();
    _folder = TestEnvironment::makeFolder(QStringLiteral("data"));
}

void TestTransfer::progressInChunks()
{
    TestHttpServer::Script script;
    script.chunks = {TestHttpServer::bytes(333), TestHttpServer::bytes(333, 'b'),
                     TestHttpServer::bytes(334, 'c')};
    script.pauseMs = 60;
    _server->route("/chunks", script);
    TestEnvironment::setNow(QDateTime(QDate(2026, 9, 9), QTime(9, 9)));

    RecordingDelegate delegate;
    auto node = make("chunks", &delegate);
    QVERIFY(runToEnd(node.get()));
    QCOMPARE(delegate.events,
             QStringList({"status .|Connecting...", "status ...|Connected...",
                          "status 33%|33% Complete...", "status 66%|66% Complete...",
                          "status 100%|100% Complete...", "status " + Node::checkMark() + "|",
                          "loaded downloading=1"}));
    QCOMPARE(fileContents(), script.chunks.join());
    QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 9, 9), QTime(9, 9)));
    QVERIFY(delegate.failures.isEmpty());
    QVERIFY(!node->isDownloading());
}

void TestTransfer::failuresKeepTheOldFile_data()
{
    QTest::addColumn<TestHttpServer::Script>("script");
    QTest::addColumn<QString>("failure");
    QTest::addColumn<bool>("statusFirst");

    const QString prefix = QStringLiteral("Download of \"Probe\" Failed: ");
    TestHttpServer::Script s;

    s = {};
    s.declaredLength = -1;
    s.chunks = {"no length given"};
    QTest::newRow("no declared length")
        << s
        << prefix + "data length does not match expected size (the file may not be available at "
                    "this time)"
        << true;

    s = {};
    s.declaredLength = 0;
    QTest::newRow("declared and sent nothing")
        << s << prefix + "data length is zero (the file may not be available at this time)" << true;

    s = {};
    s.declaredLength = 1000;
    s.chunks = {TestHttpServer::bytes(400)};
    s.abortAfterChunks = true;
    QTest::newRow("connection reset midway") << s << QString() << false;

    s = {};
    s.declaredLength = 1000;
    s.chunks = {TestHttpServer::bytes(400)};
    s.pauseMs = 1; // then the server closes the connection in the ordinary way
    QTest::newRow("closed early") << s << QString() << false;

    s = {};
    s.chunks = {"\xEF\xBB\xBF\r\n<!DOC", "TYPE html>\n<html><body>Sign in to the network"};
    s.pauseMs = 20; // the page's start arrives in two pieces
    QTest::newRow("a captive portal's page")
        << s << prefix + "the server sent something other than the expected file" << true;

    s = {};
    s.status = 404;
    s.reason = "Not Found";
    s.chunks = {"<html>error page</html>"};
    QTest::newRow("404") << s << prefix + "The server answered 404 Not Found. %1" << false;

    s = {};
    s.status = 500;
    s.reason = "Internal Server Error";
    s.chunks = {"<html>error page</html>"};
    QTest::newRow("500") << s << prefix + "The server answered 500 Internal Server Error. %1"
                         << false;

    s = {};
    s.stallAfterHeaders = true;
    s.declaredLength = 10;
    QTest::newRow("stalled past the time-out")
        << s << prefix + "The request timed out. %1" << false;

    s = {};
    s.stallForever = true;
    QTest::newRow("no answer at all") << s << prefix + "The request timed out. %1" << false;

    s = {};
    s.declaredLength = qint64(4) * 1024 * 1024 * 1024;
    s.stallAfterHeaders = true;
    QTest::newRow("announces 4 GB")
        << s << prefix + "The server announced more data than the 256 MB limit. %1" << false;
}

void TestTransfer::failuresKeepTheOldFile()
{
    QFETCH(TestHttpServer::Script, script);
    QFETCH(QString, failure);
    QFETCH(bool, statusFirst);
    Preferences::shared().setTimeoutSeconds(0.5f);
    _server->route("/bad", script);
    writeOldFile();
    TestEnvironment::setNow(QDateTime(QDate(2026, 1, 2), QTime(3, 4)));

    RecordingDelegate delegate;
    auto node = make("bad", &delegate);
    QVERIFY(runToEnd(node.get()));

    QCOMPARE(delegate.failures.size(), 1);
    if (failure.contains(QStringLiteral("%1")))
        QCOMPARE(delegate.failures.first(), failure.arg(_server->url("bad")));
    else if (!failure.isEmpty())
        QCOMPARE(delegate.failures.first(), failure);
    else
        QVERIFY(
            delegate.failures.first().startsWith(QStringLiteral("Download of \"Probe\" Failed: ")));
    QCOMPARE(fileContents(), QByteArray("the last good copy"));
    QCOMPARE(node->itemStatus(), QStringLiteral("Err"));
    QCOMPARE(node->longStatus(), QStringLiteral("Error, please see Activity Window for details"));
    QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 1, 2), QTime(3, 4)));
    QVERIFY(!node->isDownloading());

    // The three checks at the end set the status first; a transport error reports first.
    const qsizetype err =
        delegate.events.indexOf("status Err|Error, please see Activity Window for details");
    const qsizetype failed = delegate.events.indexOf("failed downloading=1");
    QVERIFY(err >= 0 && failed >= 0);
    QCOMPARE(err < failed, statusFirst);
}

void TestTransfer::undeclaredLengthWithOverride()
{
    TestHttpServer::Script script;
    script.declaredLength = -1;
    script.chunks = {"part one, ", "part two"};
    script.pauseMs = 30;
    _server->route("/nolength", script);
    RecordingDelegate delegate;
    auto node = make("nolength", &delegate, true);
    QVERIFY(runToEnd(node.get()));
    QCOMPARE(delegate.loads, 1);
    QCOMPARE(fileContents(), QByteArray("part one, part two"));
    // Without a declared length there is no percentage.
    QVERIFY(delegate.statuses().filter(QStringLiteral("%")).isEmpty());
}

void TestTransfer::redirectFollowed()
{
    _server->serve("/final", "moved here");
    TestHttpServer::Script redirect;
    redirect.status = 302;
    redirect.reason = "Found";
    redirect.location = _server->url("final").toLatin1();
    redirect.chunks = {"see elsewhere"};
    _server->route("/moved", redirect);
    RecordingDelegate delegate;
    auto node = make("moved", &delegate);
    QVERIFY(runToEnd(node.get()));
    QCOMPARE(delegate.loads, 1);
    QCOMPARE(fileContents(), QByteArray("moved here"));
}

void TestTransfer::activeTransferIsNotCutOff()
{
    // Two seconds in all, but never more than 0.2 s without a byte: the 0.8 s time-out counts
    // silence, not the length of the transfer.
    TestHttpServer::Script script;
    for (int i = 0; i < 10; ++i)
        script.chunks.append(TestHttpServer::bytes(100, char('a' + i)));
    script.pauseMs = 200;
    _server->route("/slow", script);
    Preferences::shared().setTimeoutSeconds(0.8f);
    RecordingDelegate delegate;
    auto node = make("slow", &delegate);
    QVERIFY(runToEnd(node.get(), 8000));
    QCOMPARE(delegate.loads, 1);
    QCOMPARE(fileContents().size(), 1000);
}

void TestTransfer::onlyHttpAndHttps_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("ftp") << "ftp://127.0.0.1/";
    QTest::newRow("file") << "file:///etc/";
    QTest::newRow("no scheme") << "127.0.0.1/";
    QTest::newRow("empty") << "";
}

void TestTransfer::onlyHttpAndHttps()
{
    QFETCH(QString, url);
    TestEnvironment::setNow(QDateTime(QDate(2026, 1, 1), QTime(1, 0)));
    RecordingDelegate delegate;
    auto node =
        Node::create(TestEnvironment::nodeDict(QStringLiteral("x.bin"), QStringLiteral("Probe"),
                                               url, QStringLiteral("passwd")),
                     &delegate, _folder, false);
    TestEnvironment::advance(60);
    node->beginDownloadingData();
    // It fails at once, before the start returns, and the attempt counts as the last update.
    QCOMPARE(delegate.failures.size(), 1);
    QVERIFY(delegate.failures.first().contains(QStringLiteral("is not an http or https address")));
    QCOMPARE(delegate.events.first(), QStringLiteral("failed downloading=0"));
    QCOMPARE(node->itemStatus(), QStringLiteral("Err"));
    QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 1, 1), QTime(1, 1)));
    QVERIFY(!node->isDownloading());
}

void TestTransfer::dataFolderGone_data()
{
    QTest::addColumn<bool>("blocked");
    QTest::newRow("deleted while running: made again") << false;
    QTest::newRow("a plain file in its way") << true;
}

void TestTransfer::dataFolderGone()
{
    QFETCH(bool, blocked);
    _server->serve("/ok", "fine data");
    RecordingDelegate delegate;
    auto node = make("ok", &delegate);
    QVERIFY(QDir(_folder).removeRecursively());
    if (blocked) {
        // A data folder whose path runs through a plain file cannot hold any file.
        QFile blocker(_folder);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
    }
    QVERIFY(runToEnd(node.get()));
    QCOMPARE(delegate.failures,
             blocked ? QStringList{"Download of \"Probe\" Failed: unable to write file"}
                     : QStringList{});
    QCOMPARE(fileContents(), blocked ? QByteArray("<missing>") : QByteArray("fine data"));
}

void TestTransfer::cancelRunningTransfer()
{
    TestHttpServer::Script script;
    script.chunks = {TestHttpServer::bytes(100), TestHttpServer::bytes(100)};
    script.pauseMs = 300;
    _server->route("/slow", script);
    writeOldFile();
    RecordingDelegate delegate;
    auto node = make("slow", &delegate);
    node->beginDownloadingData();
    QVERIFY(QTest::qWaitFor([&] { return node->itemStatus().endsWith(QLatin1Char('%')); }, 3000));
    TestEnvironment::setNow(QDateTime(QDate(2026, 5, 6), QTime(7, 8)));
    node->cancelDownloading();
    QCOMPARE(node->itemStatus(), QString());
    QCOMPARE(node->longStatus(), QString());
    QCOMPARE(delegate.events.last(), QStringLiteral("status |"));
    QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 5, 6), QTime(7, 8)));
    const int seen = int(delegate.events.size());
    QTest::qWait(700); // the rest of the answer would have arrived by now
    QCOMPARE(delegate.events.size(), seen);
    QVERIFY(delegate.failures.isEmpty());
    QCOMPARE(fileContents(), QByteArray("the last good copy"));
}

void TestTransfer::cancelIdleNode()
{
    RecordingDelegate delegate;
    auto node = make("unused", &delegate);
    TestEnvironment::setNow(QDateTime(QDate(2026, 5, 6), QTime(7, 9)));
    node->cancelDownloading();
    QCOMPARE(delegate.events, QStringList{"status |"});
    QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 5, 6), QTime(7, 9)));
}

void TestTransfer::secondStartDoesNothing()
{
    TestHttpServer::Script script;
    script.chunks = {"slow"};
    script.firstByteDelayMs = 300;
    _server->route("/once", script);
    RecordingDelegate delegate;
    auto node = make("once", &delegate);
    node->beginDownloadingData();
    node->beginDownloadingData();
    node->beginOrCancelDownload(); // running: this cancels
    QVERIFY(!node->isDownloading());
    node->beginOrCancelDownload(); // idle: this starts again
    QVERIFY(QTest::qWaitFor([&] { return !node->isDownloading(); }, 3000));
    QCOMPARE(delegate.loads, 1);
    QTest::qWait(400);
    QCOMPARE(delegate.loads, 1);
}

void TestTransfer::destroyedWhileRunning()
{
    TestHttpServer::Script script;
    script.chunks = {TestHttpServer::bytes(50), TestHttpServer::bytes(50)};
    script.pauseMs = 200;
    _server->route("/gone", script);
    RecordingDelegate delegate;
    auto node = make("gone", &delegate);
    node->beginDownloadingData();
    QVERIFY(QTest::qWaitFor([&] { return delegate.events.size() >= 2; }, 3000));
    const int seen = int(delegate.events.size());
    node.reset();
    QTest::qWait(500);
    QCOMPARE(delegate.events.size(), seen);
}

void TestTransfer::requestHeadersAndNoCache()
{
    TestHttpServer::Script script;
    script.chunks = {"fresh"};
    script.extraHeaders = {{"Cache-Control", "max-age=3600"}};
    _server->route("/cacheable", script);
    RecordingDelegate delegate;
    auto node = make("cacheable", &delegate);
    QVERIFY(runToEnd(node.get()));
    QVERIFY(runToEnd(node.get()));
    QCOMPARE(_server->requestCount("/cacheable"), 2); // nothing served from a cache
    const auto headers = _server->lastHeaders("/cacheable");
    QCOMPARE(headers.value("accept-encoding"), QByteArray("identity"));
    QCOMPARE(headers.value("user-agent"), QByteArray("Vantorel/0.1.0"));
}

void TestTransfer::notDueWhileDownloading()
{
    TestHttpServer::Script script;
    script.declaredLength = 100;
    script.stallAfterHeaders = true;
    _server->route("/stall", script);
    RecordingDelegate delegate;
    auto node = make("stall", &delegate);
    node->setAutoUpdates(true);
    TestEnvironment::setNow(QDateTime::currentDateTime().addDays(2)); // long overdue
    node->beginDownloadingData();
    QVERIFY(!node->checkAutoUpdate());
    node->cancelDownloading();
}

VANTOREL_TEST_CORE_MAIN(TestTransfer)
#include "test_transfer.moc"
