#include "RecordingLog.h"
#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"
#include "ui/alerts/AlertsView.h"
#include "ui/common/FailureLine.h"
#include "ui/sources/NodeScheduler.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QtTest>

// The Alerts view as the user meets it: which text the report area shows and when, what gets
// queued, the status and last-update lines, the buttons, the schedule sheet, and the selection
// that survives a restart. Downloads come from a loopback server.
class TestAlertsView : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void missingReport_data();
    void missingReport();
    void alreadyQueuedReport();
    void zeroByteFile();
    void otherDownloadLeavesTheTextInPlace();
    void reloadShowsTheNewReport();
    void failedDownloadSaysWhy_data();
    void failedDownloadSaysWhy();
    void emptiedCacheKeepsTheText_data();
    void emptiedCacheKeepsTheText();
    void dailyReportAndCancelButtons();
    void lastUpdateLineFollowsTheSchedule();
    void storedIndex_data();
    void storedIndex();
    void selectionSurvivesARestart();
    void emptyList_data();
    void emptyList();
    void repeatedTitlesKeepTheirNodes();
    void plainTextInAFixedFont();
    void terminalPrintsWhatTheViewShows_data();
    void terminalPrintsWhatTheViewShows();

private:
    // Nodes 0 to 2: the daily report, the highlights and a third report, each served from the
    // path given (by default one that never answers, so a queued node stays queued).
    void writeDefinitions(const QByteArray &daily = "stall", const QByteArray &weekly = "stall",
                          const QByteArray &other = "stall")
    {
        writeNodes({node("RSGA.txt", "Daily", daily), node("WKHF.txt", "Weekly", weekly),
                    node("3Day.txt", "Forecast", other)});
    }
    QVariantMap node(const QString &dest, const QString &name, const QByteArray &path)
    {
        return TestEnvironment::nodeDict(dest, name, _server->baseUrl(), QString::fromLatin1(path));
    }
    void writeNodes(const QList<QVariantMap> &nodes)
    {
        QVariantMap root;
        for (int i = 0; i < nodes.size(); ++i)
            root.insert(QStringLiteral("Node%1").arg(i), nodes[i]);
        QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataAlerts.plist", root));
    }
    void writeData(const QString &fileName, const QByteArray &bytes)
    {
        QFile file(_data + QLatin1Char('/') + fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
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
        _view->loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data);
    }
    // What the user does when choosing an item of the menu.
    void choose(int index)
    {
        _view->nodeListMenu()->setCurrentIndex(index);
        emit _view->nodeListMenu()->activated(index);
    }
    Node *nodeAt(int index) const { return _group->nodeAt(index); }
    QString shownText() const { return _view->nodeDataTextView()->toPlainText(); }
    QString statusLine() const { return _view->nodeStatusField()->text(); }
    QString lastUpdateLine() const { return _view->nodeLastUpdateField()->text(); }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<FlatGroup> _group;
    std::unique_ptr<AlertsView> _view;
    NodeScheduler _sheet;
    RecordingLog _log;
    QString _definitions;
    QString _data;
};

namespace {

const QString kNotLoaded =
    QStringLiteral("Data not loaded. Press \"Reload\" to download current data.");
const QString kDownloading = QStringLiteral("Downloading data, please wait...");
const QByteArray kDailyReport = ":Product: Daily\n:Issued: 2026 Nov 16\nSummary\nIA.  Regions\n";
const QString kDailyShown = QStringLiteral("Daily\nIssued: 2026 Nov 16\nSummary\n\n1A.  Regions\n");
const QByteArray kWeeklyReport =
    ":Product: Weekly\n:Issued: 2026 Nov 16\nFirst line\nsecond line\n";
const QString kWeeklyShown = QStringLiteral("Weekly Issued: 2026 Nov 16 First line second line ");

} // namespace

void TestAlertsView::init()
{
    TestEnvironment::resetState();
    _server = std::make_unique<TestHttpServer>();
    _server->stall("/stall");
    _server->serve("/daily", kDailyReport);
    _server->serve("/weekly", kWeeklyReport);
    TestHttpServer::Script gone;
    gone.status = 404;
    gone.reason = "Not Found";
    gone.chunks = {"missing"};
    _server->route("/gone", gone);
    _definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
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

void TestAlertsView::missingReport_data()
{
    QTest::addColumn<bool>("online");
    QTest::addColumn<bool>("downloadMissingData");
    QTest::addColumn<bool>("queued");

    QTest::newRow("online") << true << true << true;
    QTest::newRow("offline") << false << true << false;
    QTest::newRow("preference off") << true << false << false;
}

void TestAlertsView::missingReport()
{
    QFETCH(bool, online);
    QFETCH(bool, downloadMissingData);
    QFETCH(bool, queued);
    Preferences::shared().setOnline(online);
    Preferences::shared().setDownloadMissingData(downloadMissingData);
    writeDefinitions("stall", "weekly");
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    load();
    QCOMPARE(shownText(), kDailyShown);

    choose(1);
    QCOMPARE(_group->selectedNode(), nodeAt(1));
    QCOMPARE(_group->nodeIsInDownloadQueue(nodeAt(1)), queued);
    if (!queued) {
        QCOMPARE(shownText(), kNotLoaded);
        QCOMPARE(statusLine(), QStringLiteral("Press \"Reload\" to begin"));
        QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());
        QCOMPARE(_server->requestCount("/weekly"), 0);
        return;
    }
    QCOMPARE(shownText(), kDownloading);
    QVERIFY(_view->cancelNodeDownloadButton()->isEnabled());
    // The report replaces the downloading text as soon as it arrives.
    QTRY_COMPARE(shownText(), kWeeklyShown);
    QCOMPARE(statusLine(), QString());
    QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());
    QCOMPARE(_log.entries, QStringList{"message: Download of \"Weekly\" Successful"});
}

void TestAlertsView::alreadyQueuedReport()
{
    writeDefinitions();
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    load();
    _group->addNodeToDownloadQueue(nodeAt(2));
    _group->addNodeToDownloadQueue(nodeAt(1));
    QCOMPARE(nodeAt(1)->longStatus(), QStringLiteral("Queued..."));
    QSignalSpy statuses(_group.get(), &NodeGroup::nodeStatusChanged);

    choose(1);
    QCOMPARE(shownText(), kDownloading);
    QCOMPARE(_group->downloadQueue(), (QList<Node *>{nodeAt(2), nodeAt(1)}));
    QCOMPARE(statuses.count(), 0);
    QCOMPARE(statusLine(), QStringLiteral("Queued..."));
    QVERIFY(_view->cancelNodeDownloadButton()->isEnabled());
    QVERIFY(!nodeAt(1)->isDownloading());

    // Cancelled from elsewhere (the application's Cancel All), the controls follow.
    _group->cancelAllDownloads();
    QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());
    QCOMPARE(statusLine(), QString());
}

void TestAlertsView::zeroByteFile()
{
    writeDefinitions();
    writeData(QStringLiteral("RSGA.txt"), QByteArray());
    load();
    QVERIFY(nodeAt(0)->fileDownloaded());
    QCOMPARE(shownText(), kNotLoaded);
    QVERIFY(_group->downloadQueue().isEmpty());
}

void TestAlertsView::otherDownloadLeavesTheTextInPlace()
{
    writeDefinitions("stall", "weekly");
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    load();
    QSignalSpy loaded(_group.get(), &NodeGroup::nodeDataLoaded);
    // The daily report, shown, stalls at the head of the queue; cancelling it lets the others go.
    _group->refreshAllNodeData();
    _view->cancelNodeDownloadButton()->click();
    QTRY_COMPARE(loaded.count(), 1);
    QCOMPARE(loaded.first().first().value<Node *>(), nodeAt(1));
    QCOMPARE(_log.entries, QStringList{"message: Download of \"Weekly\" Successful"});
    QCOMPARE(shownText(), kDailyShown);
    QCOMPARE(_view->nodeListMenu()->currentIndex(), 0);
}

void TestAlertsView::reloadShowsTheNewReport()
{
    // Both issues are long enough to scroll.
    QByteArray lines;
    for (int i = 0; i < 300; ++i)
        lines += "line " + QByteArray::number(i) + '\n';
    _server->serve("/long", ":Product: Today\n" + lines);
    writeDefinitions("long");
    writeData(QStringLiteral("RSGA.txt"), ":Product: Yesterday\n" + lines);
    load();
    QVERIFY(shownText().startsWith(QStringLiteral("Yesterday\n")));
    QScrollBar *bar = _view->nodeDataTextView()->verticalScrollBar();
    bar->setValue(bar->maximum() / 2);
    const int position = bar->value();
    QVERIFY(position > 0);
    _view->refreshButton()->click();
    QVERIFY(_group->nodeIsInDownloadQueue(nodeAt(0)));
    QTRY_VERIFY(shownText().startsWith(QStringLiteral("Today\n")));
    QCOMPARE(bar->value(), position); // the new issue keeps the reader's place
    choose(0);                        // chosen from the menu, the report starts at the top
    QCOMPARE(bar->value(), 0);
    QVERIFY(_view->refreshButton()->isEnabled());
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
    QVariantMap weekly = node("WKHF.txt", "Weekly", "gone");
    if (atOnce)
        weekly.insert(QStringLiteral("URL"), QStringLiteral("ftp://127.0.0.1/"));
    writeNodes({node("RSGA.txt", "Daily", "stall"), weekly});
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    load();
    choose(1);
    QTRY_COMPARE(statusLine(), QStringLiteral("Error, please see Activity Window for details"));
    // No report: the view says so, with the log's words (no time stamp) in the failure line.
    QCOMPARE(shownText(), AlertsView::failedText());
    QCOMPARE(_log.entries.size(), 1);
    QCOMPARE(QStringLiteral("error: ") + _view->failureField()->text(), _log.entries.first());
    QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());
    QTest::qWait(100); // nothing tries again by itself
    QCOMPARE(_server->totalRequests(), atOnce ? 0 : 1);
    _view->refreshButton()->click(); // a new attempt clears the line while it runs
    QCOMPARE(_view->failureField()->text().isEmpty(), !atOnce);
}

void TestAlertsView::emptiedCacheKeepsTheText_data()
{
    QTest::addColumn<bool>("online");
    QTest::newRow("online") << true;
    QTest::newRow("offline") << false;
}

void TestAlertsView::emptiedCacheKeepsTheText()
{
    QFETCH(bool, online);
    writeDefinitions();
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    writeData(QStringLiteral("WKHF.txt"), kWeeklyReport);
    load();
    Preferences::shared().setOnline(online);
    _group->addNodeToDownloadQueue(nodeAt(2));

    _group->emptyGroupCache();
    QVERIFY(!nodeAt(0)->fileDownloaded());
    QVERIFY(!nodeAt(1)->fileDownloaded());
    QVERIFY(_group->downloadQueue().isEmpty());
    QCOMPARE(shownText(), kDailyShown);

    // Choosing the same item again reads it again.
    choose(0);
    QCOMPARE(shownText(), online ? kDownloading : kNotLoaded);
    QCOMPARE(_group->nodeIsInDownloadQueue(nodeAt(0)), online);
}

void TestAlertsView::dailyReportAndCancelButtons()
{
    writeDefinitions();
    writeData(QStringLiteral("WKHF.txt"), kWeeklyReport);
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    load();
    choose(1);
    QVERIFY(_view->dailyReportButton()->isEnabled());
    QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());

    _view->dailyReportButton()->click();
    QVERIFY(nodeAt(0)->isDownloading());
    QCOMPARE(_group->selectedNode(), nodeAt(1));
    QCOMPARE(shownText(), kWeeklyShown);
    QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());

    choose(0);
    QVERIFY(_view->cancelNodeDownloadButton()->isEnabled());
    QCOMPARE(statusLine(), QStringLiteral("Connecting..."));
    _view->cancelNodeDownloadButton()->click();
    QVERIFY(_group->downloadQueue().isEmpty());
    QVERIFY(!nodeAt(0)->isDownloading());
    QVERIFY(!_view->cancelNodeDownloadButton()->isEnabled());
    QCOMPARE(statusLine(), QString());
    QCOMPARE(shownText(), kDailyShown);
}

void TestAlertsView::lastUpdateLineFollowsTheSchedule()
{
    TestEnvironment::setNow(QDateTime(QDate(2026, 11, 16), QTime(18, 30)));
    QSettings settings;
    settings.setValue(Node::lastUpdateKey(QStringLiteral("RSGA.txt")),
                      QStringLiteral("Monday, Nov 16 2026 at 05:57 PM"));
    settings.setValue(Node::autoUpdateRateKey(QStringLiteral("RSGA.txt")), 3);
    writeDefinitions();
    writeData(QStringLiteral("RSGA.txt"), kDailyReport);
    load();
    QCOMPARE(lastUpdateLine(), QStringLiteral("Last Updated: Monday, Nov 16 2026 at 05:57 PM"));

    _view->scheduleNodeButton()->click();
    QVERIFY(_sheet.isVisible());
    QCOMPARE(_sheet.myNode(), nodeAt(0));
    _sheet.autoUpdatesButton()->click();
    QVERIFY(nodeAt(0)->autoUpdates());
    QCOMPARE(lastUpdateLine(), QStringLiteral("Last Updated: Monday, Nov 16 2026 at 05:57 PM, "
                                              "Next Update: 11/16 at 06:57 PM"));
    _sheet.close();
    QVERIFY(!_sheet.isVisible());

    // Another node's change of schedule leaves the line alone.
    nodeAt(1)->setAutoUpdates(true);
    QVERIFY(lastUpdateLine().endsWith(QStringLiteral("Next Update: 11/16 at 06:57 PM")));
}

void TestAlertsView::storedIndex_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("selected");
    QTest::newRow("within the list") << 2 << 2;
    QTest::newRow("beyond the list") << 3 << 0;
    QTest::newRow("negative") << -1 << 0;
}

void TestAlertsView::storedIndex()
{
    QFETCH(int, stored);
    QFETCH(int, selected);
    QSettings().setValue(QLatin1String(AlertsView::kMenuIndexKey), stored);
    writeDefinitions();
    load();
    QCOMPARE(_view->nodeListMenu()->currentIndex(), selected);
    QCOMPARE(_group->selectedNode(), nodeAt(selected));
    // Online with missing data: the report shown is fetched, and only that one.
    QCOMPARE(_group->downloadQueue(), QList<Node *>{nodeAt(selected)});
}

void TestAlertsView::selectionSurvivesARestart()
{
    writeDefinitions();
    writeData(QStringLiteral("3Day.txt"), ":Product: Forecast\n# comment\n");
    Preferences::shared().setOnline(false);
    load();
    QCOMPARE(_view->nodeListMenu()->currentIndex(), 0);
    choose(2);
    _view->resize(640, 420);
    _view->cleanup();
    QCOMPARE(QSettings().value(QLatin1String(AlertsView::kMenuIndexKey)).toInt(), 2);
    QCOMPARE(QSettings().value(QLatin1String(AlertsView::kViewSizeKey)).toString(),
             QStringLiteral("{640, 420}"));

    load();
    QCOMPARE(_view->nodeListMenu()->currentIndex(), 2);
    QCOMPARE(_group->selectedNode(), nodeAt(2));
    QCOMPARE(shownText(), QStringLiteral("Forecast\ncomment\n"));
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
        QFile file(_definitions + "/DataAlerts.plist");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a property list");
        file.close();
        ResourceLocator::setResourceFolder(_definitions); // the bundled file: nothing replaces it
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("^Failed to load rootDict!")));
    }
    QSettings().setValue(QLatin1String(AlertsView::kMenuIndexKey), 1);
    load();
    QCOMPARE(_view->nodeListMenu()->count(), 0);
    QCOMPARE(_group->selectedNode(), nullptr);
    for (QWidget *control : std::initializer_list<QWidget *>{
             _view->nodeListMenu(), _view->refreshButton(), _view->dailyReportButton(),
             _view->cancelNodeDownloadButton(), _view->scheduleNodeButton()})
        QVERIFY(!control->isEnabled());
    QCOMPARE(statusLine(), QString());
    QCOMPARE(lastUpdateLine(), QString());
    QCOMPARE(shownText(), QString());

    _view->refreshDailyWeatherNode();
    _view->refreshSelectedNodeData();
    _view->openScheduleWindowForNode();
    QVERIFY(!_sheet.isVisible());
    _view->cleanup();
    QCOMPARE(QSettings().value(QLatin1String(AlertsView::kMenuIndexKey)).toInt(), 1);
}

void TestAlertsView::repeatedTitlesKeepTheirNodes()
{
    QList<QVariantMap> nodes;
    for (const char *dest : {"a.txt", "b.txt", "c.txt"}) {
        QVariantMap entry = node(QLatin1String(dest), QLatin1String(dest), "stall");
        entry.insert(QStringLiteral("NodeTitle"), QStringLiteral("Same title"));
        nodes.append(entry);
        writeData(QLatin1String(dest), QByteArray("report ") + dest);
    }
    writeNodes(nodes);
    load();
    QCOMPARE(_view->nodeListMenu()->count(), 3);
    for (int index : {2, 1, 0}) {
        choose(index);
        QCOMPARE(_group->selectedNode(), nodeAt(index));
        QCOMPARE(shownText(), QStringLiteral("report ") + nodeAt(index)->fileName());
    }
}

void TestAlertsView::plainTextInAFixedFont()
{
    writeDefinitions();
    const QByteArray markup = "<html><b>Kp</b> &amp; <i>Ap</i>\n\tcolumn  aligned\n";
    writeData(QStringLiteral("RSGA.txt"), markup);
    load();
    QCOMPARE(shownText(), QString::fromLatin1(markup));
    const QFont font = _view->nodeDataTextView()->font();
    QCOMPARE(font.family(), QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
    QVERIFY(font.pointSizeF() >= 10.0);
    QVERIFY(_view->nodeDataTextView()->isReadOnly());
}

void TestAlertsView::terminalPrintsWhatTheViewShows_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<QByteArray>("lineEnd");
    QTest::newRow("daily") << 0 << "rsga-20251225.txt" << QByteArray("\n");
    QTest::newRow("highlights") << 1 << "wkhf-20251222.txt" << QByteArray("\n");
    QTest::newRow("other") << 2 << "other-discussion-20251221.txt" << QByteArray("\n");
    QTest::newRow("daily, CR LF") << 0 << "rsga-20251218.txt" << QByteArray("\r\n");
    QTest::newRow("other, CR LF") << 2 << "other-srs-20000922.txt" << QByteArray("\r\n");
}

void TestAlertsView::terminalPrintsWhatTheViewShows()
{
    QFETCH(int, index);
    QFETCH(QString, fixture);
    QFETCH(QByteArray, lineEnd);
    writeDefinitions();
    QFile source(QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins/") + fixture);
    QVERIFY(source.open(QIODevice::ReadOnly));
    QByteArray bytes = source.readAll();
    bytes.replace("\n", lineEnd);
    bytes.replace(" - ", " \x96 ");
    const QString fileNames[] = {"RSGA.txt", "WKHF.txt", "3Day.txt"};
    writeData(fileNames[index], bytes);
    QSettings().setValue(QLatin1String(AlertsView::kMenuIndexKey), index);
    load();

    QProcess process;
    process.start(QStringLiteral(VANTOREL_BINARY),
                  {QStringLiteral("report"), QStringLiteral("--definitions"), _definitions,
                   QStringLiteral("--data-dir"), _data, fileNames[index]});
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitCode(), 0);
    QString printed = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY(printed.endsWith(QLatin1Char('\n')));
    if (!shownText().endsWith(QLatin1Char('\n')))
        printed.chop(1);
    QCOMPARE(printed, shownText());
    QVERIFY(!printed.contains(QLatin1Char('\r')));
}

VANTOREL_TEST_MAIN(TestAlertsView)
#include "test_alerts_view.moc"
