#include "../UiFixture.h"
#include "RecordingLog.h"
#include "TestHttpServer.h"

#include "ui/common/FailureLine.h"
#include "ui/sources/NodeScheduler.h"

#include <QCheckBox>
#include <QPlainTextEdit>
#include <QScrollBar>

namespace {

const QString kNotLoaded = "Data not loaded. Press \"Reload\" to download current data.";
const QString kDownloading = "Downloading data, please wait...";
const QByteArray kDailyReport = ":Product: Daily\n:Issued: 2026 Nov 16\nSummary\nIA.  Regions\n";
const QString kDailyShown = "Daily\nIssued: 2026 Nov 16\nSummary\n\n1A.  Regions\n";
const QByteArray kWeeklyReport =
    ":Product: Weekly\n:Issued: 2026 Nov 16\nFirst line\nsecond line\n";
const QString kWeeklyShown = "Weekly Issued: 2026 Nov 16 First line second line ";

} // namespace

// The Alerts view as the user meets it: which text the report area shows and when, the status
// and last-update lines, the buttons, the failure line, and what survives a restart. Downloads
// come from a loopback server.
class TestAlertsView : public QObject {
    Q_OBJECT

    // The daily report, the highlights and a forecast, each served from the path given (by
    // default one that never answers, so that a queued node stays queued).
    void writeDefinitions(const QByteArray &daily = "stall", const QByteArray &weekly = "stall",
                          const QByteArray &forecast = "stall")
    {
        writeNodes({node("RSGA.txt", "Daily", daily), node("WKHF.txt", "Weekly", weekly),
                    node("3Day.txt", "Forecast", forecast)});
    }
    QVariantMap node(const QString &dest, const QString &name, const QByteArray &path)
    {
        return TestEnvironment::nodeDict(dest, name, _server->baseUrl(), path);
    }
    void writeNodes(const QList<QVariantMap> &nodes)
    {
        QVariantMap root;
        for (int i = 0; i < nodes.size(); ++i)
            root.insert(QStringLiteral("Node%1").arg(i), nodes[i]);
        TestEnvironment::installDefinitions("DataAlerts.plist", root);
    }
    void writeData(const QString &name, const QByteArray &bytes)
    {
        QVERIFY(TestEnvironment::writeFile(_data + '/' + name, bytes));
    }
    // A new group and view, loaded as the application does it at start-up.
    void load()
    {
        _view.reset();
        _group = std::make_unique<FlatGroup>();
        _group->setLog(&_log);
        _view = std::make_unique<AlertsView>(_group.get(), nullptr);
        _view->setNodeSchedulerWindow(&_sheet);
        _view->resize(800, 500);
        _view->awakeFromNib();
        _view->show();
        _view->loadDictionaryData("DataAlerts.plist", _data);
    }
    // What the user does when choosing an item of the menu.
    void choose(int index)
    {
        _view->findChild<QComboBox *>()->setCurrentIndex(index);
        emit _view->findChild<QComboBox *>()->activated(index);
    }
    Node *nodeAt(int index) const { return _group->nodeAt(index); }
    QString shown() const { return _view->findChild<QPlainTextEdit *>()->toPlainText(); }
    QString statusLine() const { return _view->nodeStatusField()->text(); }
    QString failureLine() const { return _view->findChild<FailureLine *>()->text(); }
    QString lastLine() const { return labelStartingWith(_view.get(), "Last"); }
    bool canCancel() const { return button(_view.get(), "Cancel")->isEnabled(); }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<FlatGroup> _group;
    std::unique_ptr<AlertsView> _view;
    NodeScheduler _sheet;
    RecordingLog _log;
    QString _data;

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _server = std::make_unique<TestHttpServer>();
        _server->stall("/stall");
        _server->serve("/weekly", kWeeklyReport);
        _server->serve("/forecast", ":Product: Forecast\n# comment\n");
        _data = TestEnvironment::makeFolder("data");
        _log.entries.clear();
    }
    void cleanup()
    {
        if (_group)
            _group->cancelAllDownloads();
        _sheet.hide();
        _view.reset();
        _group.reset();
        _server.reset();
    }

    void choosingAReport_data()
    {
        // Whether missing data is fetched at all is the queue's rule; here: what the view shows.
        // The highlights' file (null: none); "offline", or "queued" behind the forecast.
        columns<QByteArray, QString, QString, QString, bool>("file", "setUp", "text", "status",
                                                             "cancel");
        QTest::newRow("there") << kWeeklyReport << "" << kWeeklyShown << "" << false;
        QTest::newRow("zero bytes") << QByteArray("") << "" << kNotLoaded << "" << false;
        QTest::newRow("missing, fetched")
            << QByteArray() << "" << kDownloading << "Connecting..." << true;
        QTest::newRow("missing, not fetched")
            << QByteArray() << "offline" << kNotLoaded << "Press \"Reload\" to begin" << false;
        QTest::newRow("already queued")
            << QByteArray() << "queued" << kDownloading << "Queued..." << true;
    }
    void choosingAReport()
    {
        const QString setUp = fetch<QString>("setUp");
        Preferences::shared().setOnline(setUp != "offline");
        writeDefinitions("stall", "weekly", "forecast");
        writeData("RSGA.txt", kDailyReport);
        if (!fetch<QByteArray>("file").isNull())
            writeData("WKHF.txt", fetch<QByteArray>("file"));
        load();
        QCOMPARE(shown(), kDailyShown); // the first report, at the first start
        if (setUp == "queued") {
            _group->addNodeToDownloadQueue(nodeAt(2));
            _group->addNodeToDownloadQueue(nodeAt(1));
        }
        // Chosen while another view is shown: the report is there when this one comes back.
        _view->hide();
        choose(1);
        _view->show();
        QCOMPARE(shown(), fetch<QString>("text"));
        QCOMPARE(statusLine(), fetch<QString>("status"));
        QCOMPARE(canCancel(), fetch<bool>("cancel"));
        if (fetch<QString>("status") != "Connecting...")
            return;
        // The report replaces the downloading text as soon as it arrives; another report's
        // arrival leaves the shown one in place.
        QTRY_COMPARE(shown(), kWeeklyShown);
        QVERIFY(statusLine().isEmpty() && !canCancel());
        QCOMPARE(_log.entries, QStringList{"message: Download of \"Weekly\" Successful"});
        choose(0);
        _group->addNodeToDownloadQueue(nodeAt(2));
        QTRY_COMPARE(_log.entries.size(), 2);
        QCOMPARE(shown(), kDailyShown);
    }

    void reloadKeepsTheReadingPosition()
    {
        QByteArray lines; // both issues are long enough to scroll
        for (int i = 0; i < 300; ++i)
            lines += "line " + QByteArray::number(i) + '\n';
        _server->serve("/long", ":Product: Today\n" + lines);
        writeDefinitions("long");
        writeData("RSGA.txt", ":Product: Yesterday\n" + lines);
        load();
        QScrollBar *bar = _view->findChild<QPlainTextEdit *>()->verticalScrollBar();
        bar->setValue(bar->maximum() / 2);
        const int position = bar->value();
        QVERIFY(position > 0);
        button(_view.get(), "Reload")->click();
        QTRY_VERIFY(shown().startsWith("Today\n"));
        QCOMPARE(bar->value(), position); // the new issue keeps the reader's place
        choose(0);                        // chosen from the menu, the report starts at the top
        QCOMPARE(bar->value(), 0);
    }

    void failedDownloadSaysWhy_data()
    {
        columns<bool>("atOnce");
        QTest::newRow("the server refuses") << false;
        QTest::newRow("an address that cannot be fetched") << true;
    }
    void failedDownloadSaysWhy()
    {
        const bool atOnce = fetch<bool>("atOnce");
        _server->setFailEvery(1);
        QVariantMap weekly = node("WKHF.txt", "Weekly", "weekly");
        if (atOnce)
            weekly.insert("URL", "ftp://127.0.0.1/");
        writeNodes({node("RSGA.txt", "Daily", "stall"), weekly});
        writeData("RSGA.txt", kDailyReport);
        load();
        choose(1);
        QTRY_COMPARE(statusLine(), "Error, please see Activity Window for details");
        // No report: the view says so, with the log's words (no time stamp) in the failure line.
        QCOMPARE(shown(), AlertsView::failedText());
        QCOMPARE(_log.entries, QStringList{"error: " + failureLine()});
        QVERIFY(!canCancel());
        QTest::qWait(100); // nothing tries again by itself
        QCOMPARE(_server->totalRequests(), atOnce ? 0 : 1);
        button(_view.get(), "Reload")->click(); // a new attempt clears the line while it runs
        QCOMPARE(failureLine().isEmpty(), !atOnce);
    }

    void buttonsAndCache()
    {
        writeDefinitions();
        writeData("WKHF.txt", kWeeklyReport);
        writeData("RSGA.txt", kDailyReport);
        load();
        choose(1);
        // The daily report is fetched whatever is shown; Cancel is for the report shown.
        button(_view.get(), "Reload Daily Report")->click();
        QVERIFY(nodeAt(0)->isDownloading() && !canCancel());
        QCOMPARE(shown(), kWeeklyShown);
        choose(0);
        QCOMPARE(statusLine(), "Connecting...");
        button(_view.get(), "Cancel")->click();
        QVERIFY(!canCancel());
        QCOMPARE(statusLine() + shown(), kDailyShown);
        _group->emptyGroupCache(); // the text stays
        QCOMPARE(shown(), kDailyShown);
    }

    void scheduleSheet()
    {
        TestEnvironment::setNow(QDateTime(QDate(2026, 11, 16), QTime(18, 30)));
        QSettings().setValue(Node::lastUpdateKey("RSGA.txt"), "Monday, Nov 16 2026 at 05:57 PM");
        QSettings().setValue(Node::autoUpdateRateKey("RSGA.txt"), 3);
        writeDefinitions();
        writeData("RSGA.txt", kDailyReport);
        load();
        QCOMPARE(lastLine(), "Last Updated: Monday, Nov 16 2026 at 05:57 PM");
        button(_view.get(), "Schedule…")->click();
        QVERIFY(_sheet.isVisible());
        QCOMPARE(_sheet.nodeTitleField()->text(), "Scheduled Updating for \"Daily title\"");
        QComboBox *rate = _sheet.autoUpdateTimeMenu();
        QCOMPARE((QList<int>{rate->count(), rate->currentIndex(), rate->isEnabled()}),
                 (QList<int>{8, 3, 0}));
        // Each choice reaches the node at once, and the view's line follows.
        _sheet.autoUpdatesButton()->click();
        QVERIFY(rate->isEnabled());
        QCOMPARE(lastLine(), "Last Updated: Monday, Nov 16 2026 at 05:57 PM, "
                             "Next Update: 11/16 at 06:57 PM");
        rate->setCurrentIndex(4);
        emit rate->activated(4);
        _sheet.downloadAtStartupButton()->click();
        QVERIFY(nodeAt(0)->downloadsAtStartup());
        QVERIFY(lastLine().endsWith("Next Update: 11/16 at 07:57 PM"));
        _sheet.close();
        nodeAt(1)->setAutoUpdates(true); // another node's schedule leaves the line alone
        QVERIFY(lastLine().endsWith("Next Update: 11/16 at 07:57 PM"));
    }

    void selectionSurvivesARestart()
    {
        writeDefinitions();
        writeData("3Day.txt", ":Product: Forecast\n# comment\n");
        Preferences::shared().setOnline(false);
        load();
        choose(2);
        _view->resize(640, 420);
        _view->cleanup();
        QCOMPARE(QSettings().value("lastAlertMenuIndex").toInt(), 2);
        QCOMPARE(QSettings().value("AlertsViewSize").toString(), "{640, 420}");
        load();
        QCOMPARE(_view->findChild<QComboBox *>()->currentIndex(), 2);
        QCOMPARE(shown(), "Forecast\ncomment\n");
        QCOMPARE(_view->size(), QSize(640, 420));
    }

    void emptyList()
    {
        writeNodes({});
        QSettings().setValue("lastAlertMenuIndex", 1); // beyond the list
        load();
        QCOMPARE(_view->findChild<QComboBox *>()->count(), 0);
        QVERIFY(!_view->findChild<QComboBox *>()->isEnabled());
        QCOMPARE(
            enabledButtons(_view.get(), {"Reload", "Reload Daily Report", "Cancel", "Schedule…"}),
            "0000");
        QCOMPARE(statusLine() + lastLine() + shown(), "");
        _view->refreshDailyWeatherNode(); // none of the commands may act
        _view->refreshSelectedNodeData();
        _view->openScheduleWindowForNode();
        QVERIFY(!_sheet.isVisible());
    }
};

VANTOREL_TEST_MAIN(TestAlertsView)
#include "test_alerts_view.moc"
