#include "RecordingDelegate.h"
#include "TestEnvironment.h"

#include "core/sources/Node.h"
#include "core/sources/NodeTimes.h"
#include "core/util/DisplayTime.h"

// One node apart from its transfer: what it makes of its definition entry, its first status, and
// its schedule with the texts and settings keys that keep it across restarts.
class TestNode : public QObject {
    Q_OBJECT

private slots:
    // Half an hour off UTC and no daylight saving: local times tell themselves from UTC ones.
    void initTestCase() { qputenv("TZ", "Asia/Kolkata"); }
    void init()
    {
        TestEnvironment::resetState();
        _folder = TestEnvironment::makeFolder(u"data"_s);
    }

    // One key of an entry changed (an invalid value removes it): the node made from it, as its
    // address, file type and data file name, or none.
    void definitionEntry_data()
    {
        columns<QString, QVariant, QString>("key", "value", "made");
        const auto row = [](const char *name, const char *key, const QVariant &value,
                            const char *made) {
            QTest::newRow(name) << QString::fromLatin1(key) << value << QString::fromUtf8(made);
        };
        row("as written", "", {}, "http://127.0.0.1/file.bin 1 x.txt");
        row("base without a separator", "URL", "http://h/data", "http://h/datafile.bin 1 x.txt");
        row("no source file name", "SourceFileName", "", "http://127.0.0.1/ 1 x.txt");
        row("no FileType", "FileType", {}, "http://127.0.0.1/file.bin 0 x.txt");
        row("FileType as text", "FileType", " 2 ", "http://127.0.0.1/file.bin 2 x.txt");
        row("FileType not a number", "FileType", "image", "http://127.0.0.1/file.bin 0 x.txt");
        row("a number is a name", "DestFileName", 42, "http://127.0.0.1/file.bin 1 42");
        // Found by fuzzing: Qt reads a path that starts with a colon as one of its resources.
        row("leading colon", "DestFileName", ":f.txt", "http://127.0.0.1/file.bin 1 :f.txt");
        row("SourceFileName missing", "SourceFileName", {}, "");
        row("no DestFileName", "DestFileName", {}, "");
        row("empty name", "DestFileName", "", "");
        row("dot dot", "DestFileName", "..", "");
        row("backslash", "DestFileName", "a\\b", "");
        row("a NUL character", "DestFileName", QString("a") + QChar(0) + ".txt", "");
    }

    void definitionEntry()
    {
        QVariantMap dict = TestEnvironment::nodeDict(u"x.txt"_s);
        const QString key = fetch<QString>("key");
        if (fetch<QVariant>("value").isValid())
            dict.insert(key, fetch<QVariant>("value"));
        else
            dict.remove(key);
        const QString made = fetch<QString>("made");
        QCOMPARE(Node::definitionProblem(dict).isEmpty(), !made.isEmpty());
        const std::unique_ptr<Node> node = Node::create(dict, nullptr, _folder, false);
        QCOMPARE(bool(node), !made.isEmpty());
        if (!node)
            return;
        const QFileInfo file(node->filePath());
        QCOMPARE(node->sourceURL() + ' ' + QString::number(node->fileType()) + ' ' +
                     file.fileName(),
                 made);
        // Whatever the name, the data file is directly inside the data folder.
        QCOMPARE(file.absolutePath(), QFileInfo(_folder).absoluteFilePath());
        QVERIFY(TestEnvironment::writeFile(node->filePath(), {}));
        QVERIFY(node->fileDownloaded());
    }

    void initialStatus()
    {
        RecordingDelegate delegate;
        auto missing = make(u"n.jpg"_s, &delegate);
        QCOMPARE(missing->itemStatus() + missing->longStatus(), u"!Press \"Reload\" to begin"_s);
        QVERIFY(TestEnvironment::writeFile(missing->filePath(), {})); // even empty, it is data
        QCOMPARE(make(u"n.jpg"_s, &delegate)->itemStatus(), QString(QChar(0x221A)));
        QVERIFY(delegate.events.isEmpty()); // set while being made: nobody is told
    }

    void scheduleTextsAndKeys()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 11, 16), QTime(17, 57, 30)));
        RecordingDelegate delegate;
        auto node = make(u"k.gif"_s, &delegate);
        QCOMPARE(node->lastUpdate() + node->shortLastUpdate(), u"UnknownUnknown"_s);
        node->setLastUpdateNow();
        node->setAutoUpdateRate(3);
        QCOMPARE(node->nextUpdate() + node->shortNextUpdate(), u"Not Scheduled"_s);
        // Turning updates on recomputes from the existing last update, not from now.
        TestEnvironment::advance(600);
        node->setAutoUpdates(true);
        node->setDownloadsAtStartup(true); // no callback for the start-up flag
        QCOMPARE(delegate.events, QStringList({"settings", "settings"}));
        QCOMPARE(QStringList({node->lastUpdate(), node->shortLastUpdate(), node->nextUpdate(),
                              node->shortNextUpdate()}),
                 QStringList({"Monday, Nov 16 2026 at 05:57 PM", "11/16 @ 05:57PM",
                              "11/16 at 06:57 PM", "11/16 @ 06:57PM"}));

        QSettings settings;
        QCOMPARE(settings.value(u"autoUpdateNodek.gif"_s).toInt(), 1);
        QCOMPARE(settings.value(u"autoUpdateRateNodek.gif"_s).toInt(), 3);
        QCOMPARE(settings.value(u"downloadAtStartupNodek.gif"_s).toInt(), 1);
        // The last update is kept only by cleanup; without history, as an empty text.
        QVERIFY(!settings.contains(u"lastUpdateForNodek.gif"_s));
        node->cleanup();
        make(u"new.gif"_s)->cleanup();
        QCOMPARE(settings.value(u"lastUpdateForNodenew.gif"_s), QVariant(QString()));
        // After a restart the schedule counts from the stored last update, to the minute; an
        // overdue node is due at once.
        TestEnvironment::advance(7200);
        auto again = make(u"k.gif"_s);
        QCOMPARE(again->lastUpdate(), u"Monday, Nov 16 2026 at 05:57 PM"_s);
        QCOMPARE(again->nextUpdateDate(), QDateTime(QDate(2026, 11, 16), QTime(18, 57)));
        QVERIFY(again->checkAutoUpdate());
    }

    void dueExactlyOneIntervalLater()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 7, 1), QTime(12, 0)));
        auto node = make(u"c.gif"_s);
        for (const auto &[rate, minutes] : {std::pair{0, 5}, {7, 1440}, {1, 10}}) {
            node->setAutoUpdateRate(rate); // counted from creation
            QCOMPARE(node->nextUpdateInMinutes(), minutes);
        }
        TestEnvironment::advance(3600);
        QVERIFY(!node->checkAutoUpdate()); // off
        node->setAutoUpdates(true);
        QVERIFY(node->checkAutoUpdate());
        node->setLastUpdateNow();
        node->calculateNextUpdate();
        TestEnvironment::advance(599);
        QVERIFY(!node->checkAutoUpdate());
        TestEnvironment::advance(1);
        QVERIFY(node->checkAutoUpdate());
    }

    // The data's age against "now", 16 Nov 2026 10:01 UTC (15:31 local): the line shown, in UTC
    // or local time, and why the data is stale, if it is (twice the update interval, or a day
    // without automatic updates).
    void dataAge_data()
    {
        columns<qint64, bool, int, QString, QString>("age", "utc", "interval", "line", "stale");
        const auto row = [](const char *name, qint64 age, bool utc, int interval, const char *line,
                            const char *stale) {
            QTest::newRow(name) << age << utc << interval << QString::fromUtf8(line)
                                << QString::fromUtf8(stale);
        };
        row("no data", -1, true, 5, "", "");
        row("just now", 30, true, 5, "Data from 10:00 UTC, just now", "");
        row("minutes, local time", 720, false, 30, "Data from 15:19, 12 min ago", "");
        row("exactly twice the interval", 3600, true, 30, "Data from 09:01 UTC, 1 h ago", "");
        row("past twice the interval", 7800, true, 60, "Data from 07:51 UTC, 2 h 10 min ago",
            "the data is from 07:51 UTC, 2 h 10 min ago, older than twice its update interval "
            "(1 h).");
        row("yesterday in UTC", 50460, true, 0, "Data from Nov 15 20:00 UTC, 14 h 1 min ago", "");
        row("today in local time", 50460, false, 0, "Data from 01:30, 14 h 1 min ago", "");
        row("a day, not updated automatically", 86340, true, 0,
            "Data from Nov 15 10:02 UTC, 23 h 59 min ago", "");
        row("days, not updated automatically", 273600, true, 0,
            "Data from Nov 13 06:01 UTC, 3 days 4 h ago",
            "the data is from Nov 13 06:01 UTC, 3 days 4 h ago, older than a day, and it is not "
            "updated automatically.");
        row("another year, local time", 400 * 86400, false, 1440,
            "Data from Oct 12 2025 15:31, 400 days ago",
            "the data is from Oct 12 2025 15:31, 400 days ago, older than twice its update "
            "interval (1 day).");
    }

    void dataAge()
    {
        const QDateTime now(QDate(2026, 11, 16), QTime(10, 1), QTimeZone::utc());
        const qint64 age = fetch<qint64>("age");
        const QDateTime data = age < 0 ? QDateTime() : now.addSecs(-age).toLocalTime();
        // An interval of 0 stands for an item without automatic updates.
        const int interval = fetch<int>("interval");
        DisplayTime::setUtc(fetch<bool>("utc"));
        QCOMPARE(NodeTimes::dataLine(data, now), fetch<QString>("line"));
        const QString stale = fetch<QString>("stale");
        QCOMPARE(NodeTimes::staleReason(data, now, interval > 0, interval),
                 stale.isEmpty() ? stale : "Stale: " + stale);
        QCOMPARE(NodeTimes::isStale(data, now, interval > 0, interval), !stale.isEmpty());
    }

private:
    std::unique_ptr<Node> make(const QString &dest, NodeDelegate *delegate = nullptr)
    {
        return Node::create(TestEnvironment::nodeDict(dest), delegate, _folder, false);
    }

    QString _folder;
};

VANTOREL_TEST_CORE_MAIN(TestNode)
#include "test_node.moc"
