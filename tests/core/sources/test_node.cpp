#include "RecordingDelegate.h"
#include "TestEnvironment.h"

#include "core/net/ContentCheck.h"
#include "core/sources/Node.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QtTest>

class TestNode : public QObject {
    Q_OBJECT

private slots:
    void init();

    void sourceAddress_data();
    void sourceAddress();
    void fileType_data();
    void fileType();
    void definitionProblems_data();
    void definitionProblems();
    void contentCheck_data();
    void contentCheck();
    void initialStatusWithoutCallback_data();
    void initialStatusWithoutCallback();
    void statusPairAndCallbacks();
    void removeDataFile();
    void sharedDataFile();
    void accessorsReadTheDefinition();

    void rateTable_data();
    void rateTable();
    void nextUpdateFromLastUpdate();
    void textsWithoutHistory();
    void settingsWrittenAtOnce();
    void lastUpdateSurvivesRestart();
    void dueAtOnceAfterLongPause();
    void unreadableStoredTextIsNoHistory_data();
    void unreadableStoredTextIsNoHistory();
    void checkAutoUpdate();

private:
    std::unique_ptr<Node> make(const QVariantMap &dict, NodeDelegate *delegate = nullptr)
    {
        return Node::create(dict, delegate, _folder, false);
    }
    QString _folder;
};

void TestNode::init()
{
    TestEnvironment::resetState();
    _folder = TestEnvironment::makeFolder(QStringLiteral("data"));
}

void TestNode::sourceAddress_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("expected");
    QTest::newRow("base with slash") << "https://example.org/data/"
                                     << "image.gif"
                                     << "https://example.org/data/image.gif";
    QTest::newRow("joined without a separator") << "https://example.org/data"
                                                << "image.gif"
                                                << "https://example.org/dataimage.gif";
    QTest::newRow("empty file name") << "https://example.org/latest.jpg"
                                     << ""
                                     << "https://example.org/latest.jpg";
}

void TestNode::sourceAddress()
{
    QFETCH(QString, url);
    QFETCH(QString, source);
    QFETCH(QString, expected);
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("a.gif"), {}, url, source));
    QVERIFY(node);
    QCOMPARE(node->sourceURL(), expected);
    QCOMPARE(node->URL(), url);
    QCOMPARE(node->filePath(), QDir(_folder).filePath(QStringLiteral("a.gif")));
    QCOMPARE(node->fileName(), QStringLiteral("a.gif"));
}

void TestNode::fileType_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("absent") << QVariant() << 0;
    QTest::newRow("number 1") << QVariant(1) << 1;
    QTest::newRow("text 1") << QVariant(QStringLiteral("1")) << 1;
    QTest::newRow("text with blanks") << QVariant(QStringLiteral(" 2 ")) << 2;
    QTest::newRow("not a number") << QVariant(QStringLiteral("image")) << 0;
    QTest::newRow("huge") << QVariant(qint64(1) << 40) << std::numeric_limits<int>::max();
}

void TestNode::fileType()
{
    QFETCH(QVariant, value);
    QFETCH(int, expected);
    QVariantMap dict = TestEnvironment::nodeDict(QStringLiteral("t.txt"));
    dict.remove(QStringLiteral("FileType"));
    if (value.isValid())
        dict.insert(QStringLiteral("FileType"), value);
    QCOMPARE(make(dict)->fileType(), expected);
}

void TestNode::contentCheck_data()
{
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("accepted");
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
    QTest::newRow("JSON for a picture") << 0 << QByteArray("{\"error\": \"no image\"}") << false;
    QTest::newRow("a portal's page for a report") << 1 << portal << false;
    QTest::newRow("a bulletin") << 1 << QByteArray(":Product: Weekly Highlights\n<html> is quoted")
                                << true;
    QTest::newRow("a report that starts with a tag of its own")
        << 1 << QByteArray("<htmlish>\n# data") << true;
}

// A body that is not what the item expects never replaces good data (the transfer test shows the
// failure itself); these are the bodies each kind of item takes and refuses.
void TestNode::contentCheck()
{
    QFETCH(int, fileType);
    QFETCH(QByteArray, body);
    QFETCH(bool, accepted);
    QCOMPARE(ContentCheck::isExpected(fileType, body), accepted);
}

void TestNode::definitionProblems_data()
{
    QTest::addColumn<QString>("removeKey");
    QTest::addColumn<QVariant>("dest");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("complete") << "" << QVariant(QStringLiteral("ok.jpg")) << true;
    QTest::newRow("no URL") << "URL" << QVariant(QStringLiteral("ok.jpg")) << false;
    QTest::newRow("no SourceFileName")
        << "SourceFileName" << QVariant(QStringLiteral("ok.jpg")) << false;
    QTest::newRow("no DestFileName") << "DestFileName" << QVariant() << false;
    QTest::newRow("empty name") << "" << QVariant(QString()) << false;
    QTest::newRow("dot dot") << "" << QVariant(QStringLiteral("..")) << false;
    QTest::newRow("dot") << "" << QVariant(QStringLiteral(".")) << false;
    QTest::newRow("path") << "" << QVariant(QStringLiteral("../../.bashrc")) << false;
    QTest::newRow("absolute") << "" << QVariant(QStringLiteral("/etc/passwd")) << false;
    QTest::newRow("backslash") << "" << QVariant(QStringLiteral("a\\b")) << false;
    QTest::newRow("a dictionary") << "" << QVariant(QVariantMap{{"x", 1}}) << false;
    QTest::newRow("a number is a name") << "" << QVariant(42) << true;
    QTest::newRow("dots inside") << "" << QVariant(QStringLiteral("a..b.txt")) << true;
    // Found by fuzzing: Qt reads a path that starts with a colon as one of its resources.
    QTest::newRow("leading colon") << "" << QVariant(QStringLiteral(":forecast.txt")) << true;
    QTest::newRow("leading tilde") << "" << QVariant(QStringLiteral("~forecast.txt")) << true;
}

void TestNode::definitionProblems()
{
    QFETCH(QString, removeKey);
    QFETCH(QVariant, dest);
    QFETCH(bool, accepted);
    QVariantMap dict = TestEnvironment::nodeDict(QStringLiteral("x"));
    dict.insert(QStringLiteral("DestFileName"), dest);
    if (!dest.isValid() || !removeKey.isEmpty())
        dict.remove(removeKey.isEmpty() ? QStringLiteral("DestFileName") : removeKey);
    QCOMPARE(Node::definitionProblem(dict).isEmpty(), accepted);
    const std::unique_ptr<Node> node = make(dict);
    QCOMPARE(bool(node), accepted);
    if (!node)
        return;
    // Whatever the name, the data file is that name directly inside the data folder.
    const QFileInfo file(node->filePath());
    QCOMPARE(file.absolutePath(), QFileInfo(_folder).absoluteFilePath());
    QCOMPARE(file.fileName(), dest.toString());
    QFile out(node->filePath());
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.close();
    QVERIFY(node->fileDownloaded());
}

void TestNode::initialStatusWithoutCallback_data()
{
    QTest::addColumn<bool>("fileThere");
    QTest::addColumn<QString>("shortStatus");
    QTest::addColumn<QString>("longStatus");
    QTest::newRow("data file present") << true << QString(QChar(0x221A)) << "";
    QTest::newRow("no data file") << false << "!"
                                  << "Press \"Reload\" to begin";
}

void TestNode::initialStatusWithoutCallback()
{
    QFETCH(bool, fileThere);
    QFETCH(QString, shortStatus);
    QFETCH(QString, longStatus);
    if (fileThere) {
        QFile file(QDir(_folder).filePath(QStringLiteral("n.jpg")));
        QVERIFY(file.open(QIODevice::WriteOnly)); // an empty file counts as downloaded
    }
    RecordingDelegate delegate;
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("n.jpg")), &delegate);
    QCOMPARE(node->fileDownloaded(), fileThere);
    QCOMPARE(node->itemStatus(), shortStatus);
    QCOMPARE(node->longStatus(), longStatus);
    QVERIFY(delegate.events.isEmpty());
    QVERIFY(!node->isDownloading());
}

void TestNode::statusPairAndCallbacks()
{
    RecordingDelegate delegate;
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("n.jpg")), &delegate);
    node->setStatusMessage(QStringLiteral("-"), QStringLiteral("Queued..."));
    node->setStatusMessage(QStringLiteral("Err"), QStringLiteral("Error"));
    QCOMPARE(delegate.events, QStringList({"status -|Queued...", "status Err|Error"}));

    // Without a delegate nothing is sent and nothing breaks.
    auto lonely = make(TestEnvironment::nodeDict(QStringLiteral("m.jpg")));
    lonely->setStatusMessage(QStringLiteral("x"), QStringLiteral("y"));
    QCOMPARE(lonely->itemStatus(), QStringLiteral("x"));
}

void TestNode::removeDataFile()
{
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("r.jpg")));
    node->removeDataFile(); // nothing there: nothing happens
    QFile file(node->filePath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
    file.close();
    QVERIFY(node->fileDownloaded());
    node->setStatusMessage(Node::checkMark(), QString());
    node->removeDataFile();
    QVERIFY(!node->fileDownloaded());
    QCOMPARE(node->itemStatus(), Node::checkMark()); // the status is left alone
}

void TestNode::sharedDataFile()
{
    auto first = make(TestEnvironment::nodeDict(QStringLiteral("same.png"), QStringLiteral("A")));
    auto second = make(TestEnvironment::nodeDict(QStringLiteral("same.png"), QStringLiteral("B")));
    QCOMPARE(first->filePath(), second->filePath());
    first->setAutoUpdateRate(6);
    auto third = make(TestEnvironment::nodeDict(QStringLiteral("same.png"), QStringLiteral("C")));
    QCOMPARE(third->autoUpdateRate(), 6);
}

void TestNode::accessorsReadTheDefinition()
{
    QVariantMap dict = TestEnvironment::nodeDict(QStringLiteral("d.txt"), QStringLiteral("Name"));
    dict.insert(QStringLiteral("Description"), QStringLiteral("<p>Hi</p>"));
    dict.insert(QStringLiteral("DataSource"), QStringLiteral("https://example.org/page"));
    auto node = make(dict);
    QCOMPARE(node->itemName(), QStringLiteral("Name"));
    QCOMPARE(node->nodeTitle(), QStringLiteral("Name title"));
    QCOMPARE(node->itemDescription(), QStringLiteral("<p>Hi</p>"));
    QCOMPARE(node->dataSource(), QStringLiteral("https://example.org/page"));
    QVERIFY(node->isNode());
    QVERIFY(!node->expandable());
    QVERIFY(!node->childAtIndex(0));
    QVERIFY(!node->childAtIndex(5));

    dict.remove(QStringLiteral("DataSource"));
    QVERIFY(make(dict)->dataSource().isEmpty());
}

void TestNode::rateTable_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("minutes");
    const int table[] = {5, 10, 30, 60, 120, 360, 720, 1440};
    for (int i = 0; i < 8; ++i)
        QTest::addRow("rate %d", i) << i << table[i];
    QTest::newRow("negative") << -1 << 5;
    QTest::newRow("just past the table") << 8 << 5;
    QTest::newRow("huge") << 100000 << 5;
}

void TestNode::rateTable()
{
    QFETCH(int, rate);
    QFETCH(int, minutes);
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("r.gif")));
    node->setAutoUpdateRate(rate);
    QCOMPARE(node->nextUpdateInMinutes(), minutes);
    QCOMPARE(node->nextUpdateDate(), node->lastUpdateDate().addSecs(minutes * 60));
}

void TestNode::nextUpdateFromLastUpdate()
{
    TestEnvironment::setNow(QDateTime(QDate(2026, 11, 16), QTime(17, 57, 30)));
    RecordingDelegate delegate;
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("n.gif")), &delegate);
    node->setLastUpdateNow();
    node->setAutoUpdateRate(3);
    QCOMPARE(node->shortNextUpdate(), QStringLiteral("Not Scheduled"));
    QCOMPARE(node->nextUpdate(), QString());

    // Turning updates on recomputes from the existing last update, not from now.
    TestEnvironment::advance(600);
    node->setAutoUpdates(true);
    QCOMPARE(node->lastUpdate(), QStringLiteral("Monday, Nov 16 2026 at 05:57 PM"));
    QCOMPARE(node->shortLastUpdate(), QStringLiteral("11/16 @ 05:57PM"));
    QCOMPARE(node->nextUpdate(), QStringLiteral("11/16 at 06:57 PM"));
    QCOMPARE(node->shortNextUpdate(), QStringLiteral("11/16 @ 06:57PM"));
    QCOMPARE(delegate.events, QStringList({"settings", "settings"}));

    node->setDownloadsAtStartup(true);
    QCOMPARE(delegate.events.size(), 2); // no callback for the start-up flag
}

void TestNode::textsWithoutHistory()
{
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("new.gif")));
    QCOMPARE(node->lastUpdate(), QStringLiteral("Unknown"));
    QCOMPARE(node->shortLastUpdate(), QStringLiteral("Unknown"));
    node->cleanup();
    QSettings settings;
    QVERIFY(settings.contains(Node::lastUpdateKey(QStringLiteral("new.gif"))));
    QCOMPARE(settings.value(Node::lastUpdateKey(QStringLiteral("new.gif"))).toString(), QString());
    QCOMPARE(make(TestEnvironment::nodeDict(QStringLiteral("new.gif")))->lastUpdate(),
             QStringLiteral("Unknown"));
}

void TestNode::settingsWrittenAtOnce()
{
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("k.gif")));
    node->setAutoUpdates(true);
    node->setAutoUpdateRate(4);
    node->setDownloadsAtStartup(true);
    node->setLastUpdateNow();
    QSettings settings;
    QCOMPARE(settings.value(QStringLiteral("autoUpdateNodek.gif")).toInt(), 1);
    QCOMPARE(settings.value(QStringLiteral("autoUpdateRateNodek.gif")).toInt(), 4);
    QCOMPARE(settings.value(QStringLiteral("downloadAtStartupNodek.gif")).toInt(), 1);
    // The last update is kept only by cleanup.
    QVERIFY(!settings.contains(QStringLiteral("lastUpdateForNodek.gif")));
}

void TestNode::lastUpdateSurvivesRestart()
{
    TestEnvironment::setNow(QDateTime(QDate(2026, 3, 1), QTime(10, 0, 45)));
    {
        auto node = make(TestEnvironment::nodeDict(QStringLiteral("s.gif")));
        node->setAutoUpdates(true);
        node->setAutoUpdateRate(2);
        node->setLastUpdateNow();
        node->cleanup();
    }
    TestEnvironment::advance(3600);
    auto again = make(TestEnvironment::nodeDict(QStringLiteral("s.gif")));
    QCOMPARE(again->lastUpdateDate(), QDateTime(QDate(2026, 3, 1), QTime(10, 0))); // no seconds
    QCOMPARE(again->lastUpdate(), QStringLiteral("Sunday, Mar 01 2026 at 10:00 AM"));
    QCOMPARE(again->nextUpdateDate(), QDateTime(QDate(2026, 3, 1), QTime(10, 30)));
    QVERIFY(again->autoUpdates());
    QCOMPARE(again->autoUpdateRate(), 2);
}

void TestNode::dueAtOnceAfterLongPause()
{
    QSettings().setValue(Node::lastUpdateKey(QStringLiteral("p.gif")),
                         QStringLiteral("Sunday, Mar 01 2026 at 10:00 AM"));
    QSettings().setValue(Node::autoUpdateKey(QStringLiteral("p.gif")), 1);
    TestEnvironment::setNow(QDateTime(QDate(2026, 3, 1), QTime(10, 30)));
    QVERIFY(make(TestEnvironment::nodeDict(QStringLiteral("p.gif")))->checkAutoUpdate());
    TestEnvironment::setNow(QDateTime(QDate(2026, 3, 1), QTime(10, 4, 59)));
    QVERIFY(!make(TestEnvironment::nodeDict(QStringLiteral("p.gif")))->checkAutoUpdate());
}

void TestNode::unreadableStoredTextIsNoHistory_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("other language") << QVariant(QStringLiteral("Sonntag, 1. März 2026 10:00"));
    QTest::newRow("number") << QVariant(12);
    QTest::newRow("list") << QVariant(QStringList{"a", "b"});
    QTest::newRow("invalid date") << QVariant(QStringLiteral("Monday, Feb 30 2026 at 10:00 AM"));
}

void TestNode::unreadableStoredTextIsNoHistory()
{
    QFETCH(QVariant, stored);
    QSettings().setValue(Node::lastUpdateKey(QStringLiteral("u.gif")), stored);
    const QDateTime now(QDate(2026, 5, 5), QTime(8, 8));
    TestEnvironment::setNow(now);
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("u.gif")));
    QCOMPARE(node->lastUpdate(), QStringLiteral("Unknown"));
    QCOMPARE(node->lastUpdateDate(), now);
}

void TestNode::checkAutoUpdate()
{
    const QDateTime start(QDate(2026, 7, 1), QTime(12, 0));
    TestEnvironment::setNow(start);
    auto node = make(TestEnvironment::nodeDict(QStringLiteral("c.gif")));
    node->setAutoUpdateRate(1); // 10 minutes, counted from creation
    TestEnvironment::advance(3600);
    QVERIFY(!node->checkAutoUpdate()); // off
    node->setAutoUpdates(true);
    QVERIFY(node->checkAutoUpdate());

    node->setLastUpdateNow();
    node->calculateNextUpdate();
    TestEnvironment::advance(599);
    QVERIFY(!node->checkAutoUpdate());
    TestEnvironment::advance(1);
    QVERIFY(node->checkAutoUpdate()); // due exactly at the next update
}

VANTOREL_TEST_CORE_MAIN(TestNode)
#include "test_node.moc"
