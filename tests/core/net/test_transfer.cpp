#include "RecordingDelegate.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/net/ContentCheck.h"
#include "core/settings/Preferences.h"
#include "core/sources/Node.h"

using Script = TestHttpServer::Script;

// One node's transfer against a scripted server on the loopback interface: the status texts, the
// checks before the data file is replaced, the failure texts and the order of the callbacks.
class TestTransfer : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _server = std::make_unique<TestHttpServer>();
        _folder = TestEnvironment::makeFolder(u"data"_s);
        _delegate = RecordingDelegate();
    }

    void progressInChunks()
    {
        const QList<QByteArray> chunks{TestHttpServer::bytes(333), TestHttpServer::bytes(333, 'b'),
                                       TestHttpServer::bytes(334, 'c')};
        _server->route("/chunks", {.chunks = chunks, .pauseMs = 60});
        TestEnvironment::setNow(QDateTime(QDate(2026, 9, 9), QTime(9, 9)));
        auto node = make("chunks");
        QVERIFY(runToEnd(node.get()));
        QCOMPARE(_delegate.events,
                 QStringList({"status .|Connecting...", "status ...|Connected...",
                              "status 33%|33% Complete...", "status 66%|66% Complete...",
                              "status 100%|100% Complete...", "status " + Node::checkMark() + "|",
                              "loaded downloading=1"}));
        QCOMPARE(dataFile(), chunks.join());
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 9, 9), QTime(9, 9)));
    }

    // The failure text after its common start (%1: the address), and whether the status changes
    // first: the checks at the end set it before reporting, a transport error reports first.
    void failuresKeepTheOldFile_data()
    {
        columns<Script, QString, bool>("script", "failure", "statusFirst");
        const auto row = [](const char *name, const Script &script, const QString &failure,
                            bool statusFirst) {
            QTest::newRow(name) << script << failure << statusFirst;
        };
        const QString notThere = u" (the file may not be available at this time)"_s;
        row("no declared length", {.declaredLength = -1, .chunks = {"no length given"}},
            "data length does not match expected size" + notThere, true);
        row("declared and sent nothing", {.declaredLength = 0}, "data length is zero" + notThere,
            true);
        row("closed early", {.declaredLength = 1000, .chunks = {TestHttpServer::bytes(400)}}, {},
            false);
        // The page's start arrives in two pieces.
        row("a captive portal's page",
            {.chunks = {"\xEF\xBB\xBF\r\n<!DOC", "TYPE html>\n<html><body>Sign in"}, .pauseMs = 20},
            "the server sent something other than the expected file", true);
        row("404", {.status = 404, .reason = "Not Found", .chunks = {"<html>"}},
            "The server answered 404 Not Found. %1", false);
        row("stalled past the time-out", {.declaredLength = 10, .stallAfterHeaders = true},
            "The request timed out. %1", false);
        row("no answer at all", {.stallForever = true}, "The request timed out. %1", false);
    }

    void failuresKeepTheOldFile()
    {
        Preferences::shared().setTimeoutSeconds(0.5f);
        _server->route("/bad", fetch<Script>("script"));
        QVERIFY(TestEnvironment::writeFile(dataPath(), "the last good copy"));
        TestEnvironment::setNow(QDateTime(QDate(2026, 1, 2), QTime(3, 4)));
        auto node = make("bad");
        QVERIFY(runToEnd(node.get()));

        QCOMPARE(_delegate.failures.size(), 1);
        const QString prefix = u"Download of \"Probe\" Failed: "_s;
        QVERIFY(_delegate.failures.first().startsWith(prefix));
        if (!fetch<QString>("failure").isEmpty())
            QCOMPARE(_delegate.failures.first(),
                     prefix +
                         QString(fetch<QString>("failure")).replace("%1", _server->url("bad")));
        QCOMPARE(dataFile(), QByteArray("the last good copy"));
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 1, 2), QTime(3, 4)));
        const QString err("status Err|Error, please see Activity Window for details");
        QCOMPARE(_delegate.events.mid(_delegate.events.size() - 2),
                 fetch<bool>("statusFirst") ? QStringList({err, "failed downloading=1"})
                                            : QStringList({"failed downloading=1", err}));
    }

    // Bodies that each kind of item takes or refuses before they may replace its data file: every
    // picture format the README names, and web pages where a picture or a report was expected.
    void contentCheck_data()
    {
        columns<int, QByteArray, bool>("fileType", "body", "accepted");
        const auto row = [](const char *name, int type, const QByteArray &body, bool accepted) {
            QTest::newRow(name) << type << body << accepted;
        };
        const QByteArray portal("\xEF\xBB\xBF \r\n<!-- portal -->\n<!doctype HTML>\n<html><head>");
        row("JPEG", 0, QByteArray("\xFF\xD8\xFF\xE0\0\x10JFIF", 10), true);
        row("PNG", 0, QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16), true);
        row("GIF", 0, "GIF89a\x01", true);
        row("WebP", 0, QByteArray("RIFF\x24\0\0\0WEBPVP8 ", 16), true);
        row("TIFF", 0, QByteArray("II*\0\x08\0\0\0", 8), true);
        row("SVG after a declaration, a comment and a doctype", 0,
            "<?xml version=\"1.0\"?>\n<!-- by hand -->\n<!DOCTYPE svg PUBLIC \"-//W3C//DTD SVG "
            "1.1//EN\" \"x.dtd\" [<!ENTITY a \">\">]>\n<svg xmlns=\"\">",
            true);
        row("a portal's page for a picture", 0, portal, false);
        row("a portal's page for a report", 1, portal, false);
        row("a bulletin", 1, ":Product: Weekly Highlights\n<html> is quoted", true);
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
        // More than is written per turn of the event loop piles up, also at the end.
        QTest::newRow("large") << QByteArray("large") << true;
    }

    // Transfers that succeed; every request asks for the bytes as they are and names the program.
    void accepted()
    {
        const QByteArray path = fetch<QByteArray>("path");
        _server->route("/nolength",
                       {.declaredLength = -1, .chunks = {"part one, ", "part two"}, .pauseMs = 30});
        _server->route("/final",
                       {.chunks = {"part one, part two"},
                        .extraHeaders = {{"Last-Modified", "Wed, 21 Oct 2015 07:28:00 GMT"}}});
        _server->route("/moved", {.status = 302,
                                  .reason = "Found",
                                  .chunks = {"see elsewhere"},
                                  .location = _server->url("final").toLatin1()});
        _server->route("/slow", {.chunks = {"part one", ", ", "part two"}, .pauseMs = 500});
        const QByteArray large = TestHttpServer::bytes(8 << 20);
        _server->serve("/large", large);
        Preferences::shared().setTimeoutSeconds(0.8f);
        auto node = make(path, path == "nolength");
        QVERIFY(runToEnd(node.get(), 8000));
        QCOMPARE(_delegate.loads, 1);
        QCOMPARE(dataFile(), path == "large" ? large : QByteArray("part one, part two"));
        QCOMPARE(_delegate.events.filter(u"%"_s).isEmpty(), !fetch<bool>("percentages"));
        const QByteArray request = _server->lastRequest('/' + path);
        QVERIFY(request.contains("\r\nAccept-Encoding: identity\r\n"));
        QVERIFY(request.contains("\r\nUser-Agent: Vantorel/0.1.0\r\n"));
        // The server's last change dates the data file; without one, the download does.
        const QDateTime dated = QFileInfo(dataPath()).lastModified();
        if (path == "moved")
            QCOMPARE(dated, QDateTime(QDate(2015, 10, 21), QTime(7, 28), QTimeZone::utc()));
        else
            QVERIFY(qAbs(dated.secsTo(QDateTime::currentDateTime())) < 60);
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
        auto node = Node::create(TestEnvironment::nodeDict(u"x.bin"_s, u"Probe"_s, url, "passwd"),
                                 &_delegate, _folder, false);
        TestEnvironment::advance(60);
        node->beginDownloadingData();
        // It fails at once, before the start returns, and the attempt counts as the last update.
        QCOMPARE(_delegate.failures, QStringList("Download of \"Probe\" Failed: \"" + url +
                                                 "passwd\" is not an http or https address"));
        QCOMPARE(_delegate.events,
                 QStringList({"failed downloading=0", "status Err|" + Node::errorStatusLong()}));
        QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 1, 1), QTime(1, 1)));
    }

    // A deleted data folder is made again; a plain file in its way fails the write.
    void dataFolderGone()
    {
        _server->serve("/ok", "fine data");
        auto node = make("ok");
        for (const bool blocked : {false, true}) {
            QVERIFY(QDir(_folder).removeRecursively());
            if (blocked)
                QVERIFY(TestEnvironment::writeFile(_folder, {}));
            QVERIFY(runToEnd(node.get()));
            QCOMPARE(dataFile(), blocked ? QByteArray("<missing>") : QByteArray("fine data"));
        }
        QCOMPARE(_delegate.failures,
                 QStringList{"Download of \"Probe\" Failed: unable to write file"});
    }

    void stoppedMidway_data()
    {
        QTest::addColumn<bool>("destroyed");
        QTest::newRow("cancelled") << false;
        QTest::newRow("destroyed") << true;
    }

    // Nothing is reported after a cancel or the node's end, and the old file stays.
    void stoppedMidway()
    {
        _server->route("/slow", {.chunks = {TestHttpServer::bytes(100), TestHttpServer::bytes(100)},
                                 .pauseMs = 300});
        QVERIFY(TestEnvironment::writeFile(dataPath(), "the last good copy"));
        auto node = make("slow");
        node->beginDownloadingData();
        QTRY_VERIFY(node->itemStatus().endsWith(QLatin1Char('%')));
        TestEnvironment::setNow(QDateTime(QDate(2026, 5, 6), QTime(7, 8)));
        if (fetch<bool>("destroyed")) {
            node.reset();
        } else {
            node->cancelDownloading();
            QCOMPARE(_delegate.events.last(), u"status |"_s);
            QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 5, 6), QTime(7, 8)));
        }
        const qsizetype seen = _delegate.events.size();
        QTest::qWait(700); // the rest of the answer would have arrived by now
        QCOMPARE(_delegate.events.size(), seen);
        QCOMPARE(dataFile(), QByteArray("the last good copy"));
    }

private:
    std::unique_ptr<Node> make(const QByteArray &path, bool overrideMismatch = false)
    {
        return Node::create(TestEnvironment::nodeDict(u"data.bin"_s, u"Probe"_s, _server->baseUrl(),
                                                      QString::fromLatin1(path)),
                            &_delegate, _folder, overrideMismatch);
    }
    static bool runToEnd(Node *node, int ms = 5000)
    {
        node->beginDownloadingData();
        return QTest::qWaitFor([node] { return !node->isDownloading(); }, ms);
    }
    QString dataPath() const { return QDir(_folder).filePath(u"data.bin"_s); }
    QByteArray dataFile() const { return TestEnvironment::readFile(dataPath()); }

    std::unique_ptr<TestHttpServer> _server;
    RecordingDelegate _delegate;
    QString _folder;
};

VANTOREL_TEST_CORE_MAIN(TestTransfer)
#include "test_transfer.moc"
