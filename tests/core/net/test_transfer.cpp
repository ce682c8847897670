#include "RecordingDelegate.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/net/ContentCheck.h"
#include "core/settings/Preferences.h"
#include "core/sources/Node.h"

#include <QDir>
#include <QtTest>

// One node's transfer against a scripted server on the loopback interface: the status texts, the
// checks before the data file is replaced, the failure texts and the order of the callbacks.
class TestTransfer : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _server = std::make_unique<TestHttpServer>();
        _folder = TestEnvironment::makeFolder(QStringLiteral("data"));
        _delegate = RecordingDelegate();
    }

    void progressInChunks()
    {
        TestHttpServer::Script script;
        script.chunks = {TestHttpServer::bytes(333), TestHttpServer::bytes(333, 'b'),
                         TestHttpServer::bytes(334, 'c')};
        script.pauseMs = 60;
        _server->route("/chunks", script);
        TestEnvironment::setNow(QDateTime(QDate(2026, 9, 9), QTime(9, 9)));
        auto node = make("chunks");
        QVERIFY(runToEnd(node.get()));
        QCOMPARE(_delegate.events,
                 QStringList({"status .|Connecting...", "status ...|Connected...",
                              "status 33%|33% Complete...", "status 66%|66% Complete...",
                              "status 100%|100% Complete...", "status " + Node::checkMark() + "|",
                              "loaded downloading=1"}));
        QCOMPARE(dataFile(), script.chunks.join());
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 9, 9), QTime(9, 9)));
    }

    // The failure after its common start (%1: the address), and whether the node's status changes
    // before the failure is reported: the checks at the end set it first, a transport error
    // reports first.
    void failuresKeepTheOldFile_data()
    {
        using Script = TestHttpServer::Script;
        columns<Script, QString, bool>("script", "failure", "statusFirst");
        const QString notThere = QStringLiteral(" (the file may not be available at this time)");
        QTest::newRow("no declared length")
            << Script{.declaredLength = -1, .chunks = {"no length given"}}
            << "data length does not match expected size" + notThere << true;
        QTest::newRow("declared and sent nothing")
            << Script{.declaredLength = 0} << "data length is zero" + notThere << true;
        const Script short400{.declaredLength = 1000, .chunks = {TestHttpServer::bytes(400)}};
        QTest::newRow("closed early") << short400 << QString() << false;
        Script reset = short400;
        reset.abortAfterChunks = true;
        QTest::newRow("connection reset midway") << reset << QString() << false;
        // The page's start arrives in two pieces.
        QTest::newRow("a captive portal's page")
            << Script{.chunks = {"\xEF\xBB\xBF\r\n<!DOC", "TYPE html>\n<html><body>Sign in"},
                      .pauseMs = 20}
            << "the server sent something other than the expected file" << true;
        QTest::newRow("404") << Script{.status = 404, .reason = "Not Found", .chunks = {"<html>"}}
                             << "The server answered 404 Not Found. %1" << false;
        QTest::newRow("500") << Script{.status = 500,
                                       .reason = "Internal Server Error",
                                       .chunks = {"<html>"}}
                             << "The server answered 500 Internal Server Error. %1" << false;
        QTest::newRow("stalled past the time-out")
            << Script{.declaredLength = 10, .stallAfterHeaders = true}
            << "The request timed out. %1" << false;
        QTest::newRow("no answer at all")
            << Script{.stallForever = true} << "The request timed out. %1" << false;
    }

    void failuresKeepTheOldFile()
    {
        Preferences::shared().setTimeoutSeconds(0.5f);
        _server->route("/bad", fetch<TestHttpServer::Script>("script"));
        QVERIFY(TestEnvironment::writeFile(dataPath(), "the last good copy"));
        TestEnvironment::setNow(QDateTime(QDate(2026, 1, 2), QTime(3, 4)));
        auto node = make("bad");
        QVERIFY(runToEnd(node.get()));

        QCOMPARE(_delegate.failures.size(), 1);
        const QString prefix = QStringLiteral("Download of \"Probe\" Failed: ");
        QVERIFY(_delegate.failures.first().startsWith(prefix));
        if (!fetch<QString>("failure").isEmpty())
            QCOMPARE(_delegate.failures.first(),
                     prefix + fetch<QString>("failure").arg(_server->url("bad")));
        QCOMPARE(dataFile(), QByteArray("the last good copy"));
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 1, 2), QTime(3, 4)));
        const QString err("status Err|Error, please see Activity Window for details");
        QCOMPARE(_delegate.events.mid(_delegate.events.size() - 2),
                 fetch<bool>("statusFirst") ? QStringList({err, "failed downloading=1"})
                                            : QStringList({"failed downloading=1", err}));
    }

    // Bodies that each kind of item takes or refuses before they may replace its data file.
    void contentCheck_data()
    {
        columns<int, QByteArray, bool>("fileType", "body", "accepted");
        const QByteArray portal("\xEF\xBB\xBF \r\n<!-- portal -->\n<!doctype HTML>\n<html><head>");
        QTest::newRow("JPEG") << 0 << QByteArray("\xFF\xD8\xFF\xE0\0\x10JFIF", 10) << true;
        QTest::newRow("PNG") << 0 << QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16) << true;
        QTest::newRow("GIF") << 0 << QByteArray("GIF89a\x01\0") << true;
        QTest::newRow("WebP") << 0 << QByteArray("RIFF\x24\0\0\0WEBPVP8 ", 16) << true;
        QTest::newRow("TIFF") << 0 << QByteArray("II*\0\x08\0\0\0", 8) << true;
        QTest::newRow("SVG after a declaration, a comment and a doctype")
            << 0
            << QByteArray(
                   "<?xml version=\"1.0\"?>\n<!-- drawn by hand -->\n<!DOCTYPE svg PUBLIC "
                   "\"-//W3C//DTD SVG 1.1//EN\" \"x.dtd\" [<!ENTITY a \">\">]>\n<svg xmlns=\"\">")
            << true;
        QTest::newRow("a portal's page for a picture") << 0 << portal << false;
        QTest::newRow("an error page for a picture")
            << 0 << QByteArray("<HTML><HEAD><TITLE>404 Not Found</TITLE></HEAD>") << false;
        QTest::newRow("JSON for a picture")
            << 0 << QByteArray("{\"error\": \"no image\"}") << false;
        QTest::newRow("a portal's page for a report") << 1 << portal << false;
        QTest::newRow("a bulletin")
            << 1 << QByteArray(":Product: Weekly Highlights\n<html> is quoted") << true;
        QTest::newRow("a report that starts with a tag of its own")
            << 1 << QByteArray("<htmlish>\n# data") << true;
    }

    void contentCheck()
    {
        QCOMPARE(ContentCheck::isExpected(fetch<int>("fileType"), fetch<QByteArray>("body")),
                 fetch<bool>("accepted"));
    }

    void accepted_data()
    {
        columns<QByteArray, bool>("path", "percentages");
        QTest::newRow("no declared length, mismatch allowed") << QByteArray("nolength") << false;
        QTest::newRow("redirected") << QByteArray("moved") << true;
        // A second in all, never more than 0.5 s without a byte: the 0.8 s time-out counts
        // silence, not the length of the transfer.
        QTest::newRow("slow but never silent") << QByteArray("slow") << true;
    }

    void accepted()
    {
        using Script = TestHttpServer::Script;
        const QByteArray path = fetch<QByteArray>("path");
        _server->route(
            "/nolength",
            Script{.declaredLength = -1, .chunks = {"part one, ", "part two"}, .pauseMs = 30});
        _server->serve("/final", "part one, part two");
        _server->route("/moved", Script{.status = 302,
                                        .reason = "Found",
                                        .chunks = {"see elsewhere"},
                                        .location = _server->url("final").toLatin1()});
        _server->route("/slow", Script{.chunks = {"part one", ", ", "part two"}, .pauseMs = 500});
        Preferences::shared().setTimeoutSeconds(0.8f);
        auto node = make(path, path == "nolength");
        QVERIFY(runToEnd(node.get(), 8000));
        QCOMPARE(_delegate.loads, 1);
        QCOMPARE(dataFile(), QByteArray("part one, part two"));
        QCOMPARE(_delegate.statuses().filter(QStringLiteral("%")).isEmpty(),
                 !fetch<bool>("percentages"));
    }

    void onlyHttpAndHttps_data()
    {
        QTest::addColumn<QString>("url");
        for (const char *url : {"ftp://127.0.0.1/", "file:///etc/", "127.0.0.1/", ""})
            QTest::newRow(url) << QString::fromLatin1(url);
    }

    void onlyHttpAndHttps()
    {
        const QString url = fetch<QString>("url");
        TestEnvironment::setNow(QDateTime(QDate(2026, 1, 1), QTime(1, 0)));
        auto node = Node::create(TestEnvironment::nodeDict(QStringLiteral("x.bin"),
                                                           QStringLiteral("Probe"), url, "passwd"),
                                 &_delegate, _folder, false);
        TestEnvironment::advance(60);
        node->beginDownloadingData();
        // It fails at once, before the start returns, and the attempt counts as the last update.
        QCOMPARE(_delegate.failures.size(), 1);
        QVERIFY(
            _delegate.failures.first().contains(QStringLiteral("is not an http or https address")));
        QCOMPARE(_delegate.events.first(), QStringLiteral("failed downloading=0"));
        QCOMPARE(node->itemStatus(), QStringLiteral("Err"));
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 1, 1), QTime(1, 1)));
        QVERIFY(!node->isDownloading());
    }

    void dataFolderGone_data()
    {
        QTest::addColumn<bool>("blocked");
        QTest::newRow("deleted: made again") << false;
        QTest::newRow("a plain file in its way") << true;
    }

    void dataFolderGone()
    {
        const bool blocked = fetch<bool>("blocked");
        _server->serve("/ok", "fine data");
        auto node = make("ok");
        QVERIFY(QDir(_folder).removeRecursively());
        if (blocked) // a data folder whose path runs through a plain file cannot hold any file
            QVERIFY(TestEnvironment::writeFile(_folder, {}));
        QVERIFY(runToEnd(node.get()));
        QCOMPARE(_delegate.failures,
                 blocked ? QStringList{"Download of \"Probe\" Failed: unable to write file"}
                         : QStringList{});
        QCOMPARE(dataFile(), blocked ? QByteArray("<missing>") : QByteArray("fine data"));
    }

    void cancelRunningTransfer()
    {
        _server->route("/slow", {.chunks = {TestHttpServer::bytes(100), TestHttpServer::bytes(100)},
                                 .pauseMs = 300});
        QVERIFY(TestEnvironment::writeFile(dataPath(), "the last good copy"));
        auto node = make("slow");
        node->beginDownloadingData();
        QTRY_VERIFY(node->itemStatus().endsWith(QLatin1Char('%')));
        TestEnvironment::setNow(QDateTime(QDate(2026, 5, 6), QTime(7, 8)));
        node->cancelDownloading();
        QCOMPARE(_delegate.events.last(), QStringLiteral("status |"));
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 5, 6), QTime(7, 8)));
        const qsizetype seen = _delegate.events.size();
        QTest::qWait(700); // the rest of the answer would have arrived by now
        QCOMPARE(_delegate.events.size(), seen);
        QCOMPARE(dataFile(), QByteArray("the last good copy"));
    }

    void secondStartDoesNothing()
    {
        _server->route("/once", {.chunks = {"slow"}, .firstByteDelayMs = 300});
        auto node = make("once");
        node->beginDownloadingData();
        node->beginDownloadingData();
        node->beginOrCancelDownload(); // running: this cancels
        QVERIFY(!node->isDownloading());
        node->beginOrCancelDownload(); // idle: this starts again
        QTRY_VERIFY(!node->isDownloading());
        QTest::qWait(400);
        QCOMPARE(_delegate.loads, 1);
    }

    void destroyedWhileRunning()
    {
        _server->route("/gone", {.chunks = {TestHttpServer::bytes(50), TestHttpServer::bytes(50)},
                                 .pauseMs = 200});
        auto node = make("gone");
        node->beginDownloadingData();
        QTRY_VERIFY(_delegate.events.size() >= 2);
        const qsizetype seen = _delegate.events.size();
        node.reset();
        QTest::qWait(500);
        QCOMPARE(_delegate.events.size(), seen);
    }

    void requestHeadersAndNoCache()
    {
        _server->route("/cacheable",
                       {.chunks = {"fresh"}, .extraHeaders = {{"Cache-Control", "max-age=3600"}}});
        auto node = make("cacheable");
        QVERIFY(runToEnd(node.get()));
        QVERIFY(runToEnd(node.get()));
        QCOMPARE(_server->requestCount("/cacheable"), 2); // nothing served from a cache
        const auto headers = _server->lastHeaders("/cacheable");
        QCOMPARE(headers.value("accept-encoding"), QByteArray("identity"));
        QCOMPARE(headers.value("user-agent"), QByteArray("Vantorel/0.1.0"));
    }

    void notDueWhileDownloading()
    {
        _server->stall("/stall");
        auto node = make("stall");
        node->setAutoUpdates(true);
        TestEnvironment::setNow(QDateTime::currentDateTime().addDays(2)); // long overdue
        node->beginDownloadingData();
        QVERIFY(!node->checkAutoUpdate());
        node->cancelDownloading();
    }

private:
    std::unique_ptr<Node> make(const QByteArray &path, bool overrideMismatch = false)
    {
        return Node::create(TestEnvironment::nodeDict(QStringLiteral("data.bin"),
                                                      QStringLiteral("Probe"), _server->baseUrl(),
                                                      QString::fromLatin1(path)),
                            &_delegate, _folder, overrideMismatch);
    }
    static bool runToEnd(Node *node, int ms = 5000)
    {
        node->beginDownloadingData();
        return QTest::qWaitFor([node] { return !node->isDownloading(); }, ms);
    }
    QString dataPath() const { return QDir(_folder).filePath(QStringLiteral("data.bin")); }
    QByteArray dataFile() const { return TestEnvironment::readFile(dataPath()); }

    std::unique_ptr<TestHttpServer> _server;
    RecordingDelegate _delegate;
    QString _folder;
};

VANTOREL_TEST_CORE_MAIN(TestTransfer)
#include "test_transfer.moc"
