#include "../UiFixture.h"
#include "RecordingLog.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"
#include "ui/alerts/AlertsView.h"
#include "ui/common/FailureLine.h"
#include "ui/sources/NodeScheduler.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSettings>

// The Alerts view as the user meets it: which text the report area shows and when, the status
// and last-update lines, the buttons, the failure line, and what survives a restart. Downloads
// come from a loopback server.
class TestAlertsView : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void choosingAReport_data();
    void choosingAReport();
    void reportsArrive();
    void reloadKeepsTheReadingPosition();
    void failedDownloadSaysWhy_data();
    void failedDownloadSaysWhy();
    void buttonsAndCache();
    void scheduleSheet();
    void selectionSurvivesARestart();
    void emptyList_data();
    void emptyList();
    void plainTextInAFixedFont();

private:
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
        QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataAlerts.plist", root));
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
    bool canCancel() const { return button(_view.get(), "Cancel")->isEnabled(); }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<FlatGroup> _group;
    std::unique_ptr<AlertsView> _view;
    NodeScheduler _sheet;
    RecordingLog _log;
    QString _definitions;
    QString _data;
};

namespace {

const QString kNotLoaded = "Data not loaded. Press \"Reload\" to download current data.";
const QString kDownloading = "Downloading data, please wait...";
const QByteArray kDailyReport = ":Product: Daily\n:Issued: 2026 Nov 16\nSummary\nIA.  Regions\n";
const QString kDailyShown = "Daily\nIssued: 2026 Nov 16\nSummary\n\n1A.  Regions\n";
const QByteArray kWeeklyReport =
    ":Product: Weekly\n:Issued: 2026 Nov 16\nFirst line\nsecond line\n";
const QString kWeeklyShown = "Weekly Issued: 2026 Nov 16 First line second line ";

} // namespace

void TestAlertsView::init()
{
    TestEnvironment::resetState();
    _server = std::make_unique<TestHttpServer>();
    _server->stall("/stall");
    _server->serve("/weekly", kWeeklyReport);
    _server->serve("/forecast", ":Product: Forecast\n# comment\n");
    _definitions = TestEnvironment::makeFolder("definitions");
    _data = TestEnvironment::makeFolder("data");
    ResourceLocator::setDefinitionsFolder(_definitions);
    _log.entries.clear();
}

void TestAlertsView::cleanup()
{
    if (_group)
        _group->cancelAllDownloads();
    _sheet.hide();
    _view.reset();
    _group.reset();
    _server.reset();
}

void TestAlertsView::choosingAReport_data()
{
    // Whether missing data is fetched at all is the queue's rule; here: what the view shows.
    QTest::addColumn<QByteArray>("file"); // of the highlights; null: none
    QTest::addColumn<QString>("setUp");   // "offline", or "queued" behind the forecast
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("cancel");
    const auto row = [](const char *name, const QByteArray &file, const char *setUp,
                        const QString &text, const char *status, bool cancel) {
        QTest::newRow(name) << file << QString(setUp) << text << QString(status) << cancel;
    };
    row("there", kWeeklyReport, "", kWeeklyShown, "", false);
    row("zero bytes", "", "", kNotLoaded, "", false);
    row("missing, fetched", nullptr, "", kDownloading, "Connecting...", true);
    row("missing, not fetched", nullptr, "offline", kNotLoaded, "Press \"Reload\" to begin", false);
    row("already queued", nullptr, "queued", kDownloading, "Queued...", true);
}

void TestAlertsView::choosingAReport()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, setUp);
    QFETCH(QString, text);
    QFETCH(QString, status);
    QFETCH(bool, cancel);
    Preferences::shared().setOnline(setUp != "offline");
    writeDefinitions();
    writeFile(_data + "/RSGA.txt", kDailyReport);
    if (!file.isNull())
        writeFile(_data + "/WKHF.txt", file);
    load();
    QCOMPARE(shown(), kDailyShown); // the first report, at the first start
    if (setUp == "queued") {
        _group->addNodeToDownloadQueue(nodeAt(2));
        _group->addNodeToDownloadQueue(nodeAt(1));
    }
    choose(1);
    QCOMPARE(_group->selectedNode(), nodeAt(1));
    QCOMPARE(shown(), text);
    QCOMPARE(statusLine(), status);
    QCOMPARE(canCancel(), cancel);
    QCOMPARE(_group->nodeIsInDownloadQueue(nodeAt(1)), cancel);
}

void TestAlertsView::reportsArrive()
{
    writeDefinitions("stall", "weekly", "forecast");
    writeFile(_data + "/RSGA.txt", kDailyReport);
    load();
    choose(1);
    QCOMPARE(shown(), kDownloading);
    // The report replaces the downloading text as soon as it arrives.
    QTRY_COMPARE(shown(), kWeeklyShown);
    QCOMPARE(statusLine(), "");
    QVERIFY(!canCancel());
    QCOMPARE(_log.entries, QStringList{"message: Download of \"Weekly\" Successful"});
    // Another report's arrival is logged, and leaves the shown one in place.
    choose(0);
    _group->addNodeToDownloadQueue(nodeAt(2));
    QTRY_COMPARE(_log.entries.size(), 2);
    QCOMPARE(_log.entries.last(), "message: Download of \"Forecast\" Successful");
    QCOMPARE(shown(), kDailyShown);
}

void TestAlertsView::reloadKeepsTheReadingPosition()
{
    QByteArray lines; // both issues are long enough to scroll
    for (int i = 0; i < 300; ++i)
        lines += "line " + QByteArray::number(i) + '\n';
    _server->serve("/long", ":Product: Today\n" + lines);
    writeDefinitions("long");
    writeFile(_data + "/RSGA.txt", ":Product: Yesterday\n" + lines);
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

void TestAlertsView::failedDownloadSaysWhy_data()
{
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("the server refuses") << false;
    QTest::newRow("an address that cannot be fetched") << true;
}

void TestAlertsView::failedDownloadSaysWhy()
{
    QFETCH(bool, atOnce);
    _server->setFailEvery(1);
    QVariantMap weekly = node("WKHF.txt", "Weekly", "weekly");
    if (atOnce)
        weekly.insert("URL", "ftp://127.0.0.1/");
    writeNodes({node("RSGA.txt", "Daily", "stall"), weekly});
    writeFile(_data + "/RSGA.txt", kDailyReport);
    load();
    choose(1);
    QTRY_COMPARE(statusLine(), "Error, please see Activity Window for details");
    // No report: the view says so, with the log's words (no time stamp) in the failure line.
    QCOMPARE(shown(), AlertsView::failedText());
    QCOMPARE(_log.entries, QStringList{"error: " + _view->findChild<FailureLine *>()->text()});
    QVERIFY(!canCancel());
    QTest::qWait(100); // nothing tries again by itself
    QCOMPARE(_server->totalRequests(), atOnce ? 0 : 1);
    button(_view.get(), "Reload")->click(); // a new attempt clears the line while it runs
    QCOMPARE(_view->findChild<FailureLine *>()->text().isEmpty(), !atOnce);
}

void TestAlertsView::buttonsAndCache()
{
    writeDefinitions();
    writeFile(_data + "/WKHF.txt", kWeeklyReport);
    writeFile(_data + "/RSGA.txt", kDailyReport);
    load();
    choose(1);
    // The daily report is fetched whatever is shown; Cancel is for the report shown.
    button(_view.get(), "Reload Daily Report")->click();
    QVERIFY(nodeAt(0)->isDownloading());
    QCOMPARE(shown(), kWeeklyShown);
    QVERIFY(!canCancel());
    choose(0);
    QCOMPARE(statusLine(), "Connecting...");
    button(_view.get(), "Cancel")->click();
    QVERIFY(_group->downloadQueue().isEmpty());
    QVERIFY(!canCancel());
    QCOMPARE(statusLine(), "");
    QCOMPARE(shown(), kDailyShown);
    // Emptying the cache leaves the text; choosing the report again reads it again.
    _group->emptyGroupCache();
    QCOMPARE(shown(), kDailyShown);
    choose(0);
    QCOMPARE(shown(), kDownloading);
    _group->cancelAllDownloads(); // from elsewhere: the controls follow
    QVERIFY(!canCancel());
    QCOMPARE(statusLine(), "");
}

void TestAlertsView::scheduleSheet()
{
    TestEnvironment::setNow(QDateTime(QDate(2026, 11, 16), QTime(18, 30)));
    QSettings().setValue(Node::lastUpdateKey("RSGA.txt"), "Monday, Nov 16 2026 at 05:57 PM");
    QSettings().setValue(Node::autoUpdateRateKey("RSGA.txt"), 3);
    writeDefinitions();
    writeFile(_data + "/RSGA.txt", kDailyReport);
    load();
    QCOMPARE(labelStartingWith(_view.get(), "Last"),
             "Last Updated: Monday, Nov 16 2026 at 05:57 PM");
    button(_view.get(), "Schedule…")->click();
    QVERIFY(_sheet.isVisible());
    QCOMPARE(_sheet.windowModality(), Qt::WindowModal);
    QCOMPARE(_sheet.nodeTitleField()->text(), "Scheduled Updating for \"Daily title\"");
    QComboBox *rate = _sheet.autoUpdateTimeMenu();
    QCOMPARE((QList<int>{rate->count(), rate->currentIndex(), rate->isEnabled()}),
             (QList<int>{8, 3, 0}));
    // Each choice is stored at once, and the view's line follows.
    _sheet.autoUpdatesButton()->click();
    QVERIFY(rate->isEnabled());
    QCOMPARE(labelStartingWith(_view.get(), "Last"),
             "Last Updated: Monday, Nov 16 2026 at 05:57 PM, Next Update: 11/16 at 06:57 PM");
    rate->setCurrentIndex(4);
    emit rate->activated(4);
    _sheet.downloadAtStartupButton()->click();
    for (const char *key : {"autoUpdateNodeRSGA.txt", "downloadAtStartupNodeRSGA.txt"})
        QCOMPARE(QSettings().value(key).toInt(), 1);
    QCOMPARE(QSettings().value("autoUpdateRateNodeRSGA.txt").toInt(), 4);
    QVERIFY(labelStartingWith(_view.get(), "Last").endsWith("Next Update: 11/16 at 07:57 PM"));
    _sheet.close();
    QVERIFY(!_sheet.isVisible());
    nodeAt(1)->setAutoUpdates(true); // another node's schedule leaves the line alone
    QVERIFY(labelStartingWith(_view.get(), "Last").endsWith("Next Update: 11/16 at 07:57 PM"));
}

void TestAlertsView::selectionSurvivesARestart()
{
    writeDefinitions();
    writeFile(_data + "/3Day.txt", ":Product: Forecast\n# comment\n");
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

void TestAlertsView::emptyList_data()
{
    QTest::addColumn<bool>("readable");
    QTest::newRow("no nodes") << true;
    QTest::newRow("unreadable file") << false;
}

void TestAlertsView::emptyList()
{
    QFETCH(bool, readable);
    if (readable) {
        writeNodes({});
    } else {
        writeFile(_definitions + "/DataAlerts.plist", "not a property list");
        ResourceLocator::setResourceFolder(_definitions); // the bundled file: nothing replaces it
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Failed to load rootDict!"));
    }
    QSettings().setValue("lastAlertMenuIndex", 1);
    load();
    QCOMPARE(_view->findChild<QComboBox *>()->count(), 0);
    QVERIFY(!_view->findChild<QComboBox *>()->isEnabled());
    QCOMPARE(enabledButtons(_view.get(), {"Reload", "Reload Daily Report", "Cancel", "Schedule…"}),
             (QList<bool>{false, false, false, false}));
    QCOMPARE(statusLine() + labelStartingWith(_view.get(), "Last") + shown(), "");
    _view->refreshDailyWeatherNode(); // none of the commands may act
    _view->refreshSelectedNodeData();
    _view->openScheduleWindowForNode();
    QVERIFY(!_sheet.isVisible());
    _view->cleanup();
    QCOMPARE(QSettings().value("lastAlertMenuIndex").toInt(), 1);
}

void TestAlertsView::plainTextInAFixedFont()
{
    // Repeated titles still stand for their own reports; markup is shown as it is.
    QList<QVariantMap> nodes;
    for (const char *dest : {"a.txt", "b.txt"}) {
        nodes.append(node(dest, dest, "stall"));
        nodes.last().insert("NodeTitle", "Same title");
        writeFile(_data + '/' + dest, QByteArray("<html><b>Kp</b> &amp;\n\tcolumn  ") + dest);
    }
    writeNodes(nodes);
    load();
    choose(1);
    QCOMPARE(shown(), "<html><b>Kp</b> &amp;\n\tcolumn  b.txt");
    auto *text = _view->findChild<QPlainTextEdit *>();
    QCOMPARE(text->font().family(), QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
    QVERIFY(text->font().pointSizeF() >= 10.0);
    QVERIFY(text->isReadOnly());
}

VANTOREL_TEST_MAIN(TestAlertsView)
#include "test_alerts_view.moc"
