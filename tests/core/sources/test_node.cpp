#include "RecordingDelegate.h"
#include "TestEnvironment.h"

#include "core/sources/Node.h"

#include <QDir>
#include <QSettings>
#include <QtTest>

// One node apart from its transfer: what it makes of its definition entry, its first status, and
// its schedule with the texts and settings keys that keep it across restarts.
class TestNode : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _folder = TestEnvironment::makeFolder(QStringLiteral("data"));
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
        row("FileType huge", "FileType", qint64(1) << 40,
            "http://127.0.0.1/file.bin 2147483647 x.txt");
        row("a number is a name", "DestFileName", 42, "http://127.0.0.1/file.bin 1 42");
        row("dots inside", "DestFileName", "a..b.txt", "http://127.0.0.1/file.bin 1 a..b.txt");
        // Found by fuzzing: Qt reads a path that starts with a colon as one of its resources.
        row("leading colon", "DestFileName", ":f.txt", "http://127.0.0.1/file.bin 1 :f.txt");
        row("no URL", "URL", {}, "");
        row("SourceFileName missing", "SourceFileName", {}, "");
        row("no DestFileName", "DestFileName", {}, "");
        row("empty name", "DestFileName", "", "");
        row("dot dot", "DestFileName", "..", "");
        row("a path", "DestFileName", "../../.bashrc", "");
        row("backslash", "DestFileName", "a\\b", "");
        row("a dictionary", "DestFileName", QVariantMap{{"x", 1}}, "");
    }

    void definitionEntry()
    {
        QVariantMap dict = TestEnvironment::nodeDict(QStringLiteral("x.txt"));
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
        QCOMPARE(
            QStringList({node->sourceURL(), QString::number(node->fileType()), file.fileName()})
                .join(' '),
            made);
        // Whatever the name, the data file is directly inside the data folder.
        QCOMPARE(file.absolutePath(), QFileInfo(_folder).absoluteFilePath());
        QVERIFY(TestEnvironment::writeFile(node->filePath(), {}));
        QVERIFY(node->fileDownloaded());
    }

    void initialStatus()
    {
        RecordingDelegate delegate;
        auto missing = make(QStringLiteral("n.jpg"), &delegate);
        QCOMPARE(missing->itemStatus() + missing->longStatus(),
                 QStringLiteral("!Press \"Reload\" to begin"));
        QVERIFY(TestEnvironment::writeFile(missing->filePath(), {})); // even empty, it is data
        QCOMPARE(make(QStringLiteral("n.jpg"), &delegate)->itemStatus(), QString(QChar(0x221A)));
        QVERIFY(delegate.events.isEmpty()); // set while being made: nobody is told
    }

    // Out of range counts as the first; the schedule is kept per data file, so two entries for
    // one file share it.
    void rates()
    {
        const QList<QPair<int, int>> minutes{{0, 5},  {3, 60}, {7, 1440},
                                             {-1, 5}, {8, 5},  {99999, 5}};
        for (const auto &[rate, expected] : minutes) {
            make(QStringLiteral("r.gif"))->setAutoUpdateRate(rate);
            auto node = make(QStringLiteral("r.gif"));
            QCOMPARE(node->nextUpdateInMinutes(), expected);
            QCOMPARE(node->nextUpdateDate(), node->lastUpdateDate().addSecs(expected * 60));
        }
    }

    void scheduleTextsAndKeys()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 11, 16), QTime(17, 57, 30)));
        RecordingDelegate delegate;
        auto node = make(QStringLiteral("k.gif"), &delegate);
        QCOMPARE(node->lastUpdate() + node->shortLastUpdate(), QStringLiteral("UnknownUnknown"));
        node->setLastUpdateNow();
        node->setAutoUpdateRate(3);
        QCOMPARE(node->nextUpdate() + node->shortNextUpdate(), QStringLiteral("Not Scheduled"));
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
        QCOMPARE(settings.value(QStringLiteral("autoUpdateNodek.gif")).toInt(), 1);
        QCOMPARE(settings.value(QStringLiteral("autoUpdateRateNodek.gif")).toInt(), 3);
        QCOMPARE(settings.value(QStringLiteral("downloadAtStartupNodek.gif")).toInt(), 1);
        // The last update is kept only by cleanup, and without history as an empty text.
        QVERIFY(!settings.contains(QStringLiteral("lastUpdateForNodek.gif")));
        make(QStringLiteral("new.gif"))->cleanup();
        QCOMPARE(settings.value(QStringLiteral("lastUpdateForNodenew.gif")), QVariant(QString()));
    }

    void lastUpdateSurvivesRestart()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 3, 1), QTime(10, 0, 45)));
        {
            auto node = make(QStringLiteral("s.gif"));
            node->setAutoUpdates(true);
            node->setAutoUpdateRate(2);
            node->setLastUpdateNow();
            node->cleanup();
        }
        TestEnvironment::advance(3600);
        auto again = make(QStringLiteral("s.gif"));
        QCOMPARE(again->lastUpdate(), QStringLiteral("Sunday, Mar 01 2026 at 10:00 AM"));
        QCOMPARE(again->nextUpdateDate(),
                 QDateTime(QDate(2026, 3, 1), QTime(10, 30))); // no seconds
        QVERIFY(again->checkAutoUpdate()); // overdue after the pause: due at once

        // A stored text that cannot be read back is no history: the node counts from now.
        for (const QVariant &stored : {QVariant(12), QVariant("Monday, Feb 30 2026 at 10:00 AM")}) {
            QSettings().setValue(Node::lastUpdateKey(QStringLiteral("u.gif")), stored);
            auto node = make(QStringLiteral("u.gif"));
            QCOMPARE(node->lastUpdate(), QStringLiteral("Unknown"));
            QCOMPARE(node->lastUpdateDate(), QDateTime(QDate(2026, 3, 1), QTime(11, 0, 45)));
        }
    }

    void dueExactlyOneIntervalLater()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 7, 1), QTime(12, 0)));
        auto node = make(QStringLiteral("c.gif"));
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
