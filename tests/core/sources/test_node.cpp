#include "RecordingDelegate.h"
#include "TestEnvironment.h"

#include "core/sources/Node.h"

// One node apart from its transfer: what it makes of its definition entry, its first status, and
// its schedule with the texts and settings keys that keep it across restarts.
class TestNode : public QObject {
    Q_OBJECT

private slots:
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

private:
    std::unique_ptr<Node> make(const QString &dest, NodeDelegate *delegate = nullptr)
    {
        return Node::create(TestEnvironment::nodeDict(dest), delegate, _folder, false);
    }

    QString _folder;
};

VANTOREL_TEST_CORE_MAIN(TestNode)
#include "test_node.moc"
