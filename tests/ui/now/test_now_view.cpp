#include "../UiFixture.h"

#include "core/now/NowHistory.h"
#include "core/now/NowRecorder.h"
#include "core/sources/GroupCatalogue.h"
#include "ui/now/NowChartView.h"
#include "ui/now/NowCharts.h"
#include "ui/now/NowMessageList.h"
#include "ui/now/NowValueTile.h"
#include "ui/now/NowValuesPanel.h"
#include "ui/now/NowView.h"

#include <QChart>
#include <QPlainTextEdit>
#include <QTreeWidget>

// The Now view as a user meets it, over a data folder of small provider files and a history of
// three days: a value past its threshold says it is stale and how old it is, the range control
// sets every chart's span (and is remembered), the cursor shows each chart's values at one time,
// and choosing a message shows all of it.
class TestNowView : public QObject {
    Q_OBJECT

    static NowValueTile *tile(const NowView &view, const QString &title)
    {
        for (NowValueTile *tile : view.values()->tiles()) {
            if (tile->title() == title)
                return tile;
        }
        qFatal("No tile %s", qPrintable(title));
    }

private slots:
    void whatTheUserSees();
};

void TestNowView::whatTheUserSees()
{
    TestEnvironment::resetState();
    const qint64 now = QDateTime(QDate(2026, 5, 1), QTime(12, 0), Qt::UTC).toSecsSinceEpoch();
    TestEnvironment::setNow(QDateTime::fromSecsSinceEpoch(now, Qt::UTC));
    const QString data = TestEnvironment::makeFolder("data");
    QVERIFY(TestEnvironment::writeFile(
        data + "/NowXrays.json",
        R"([{"time_tag":"2026-05-01T09:50:00Z","satellite":18,"flux":2.38e-6,"energy":"0.1-0.8nm"}])"));
    QVERIFY(TestEnvironment::writeFile(
        data + "/NowSolarWind.json",
        R"([{"time_tag":"2026-05-01 11:55:00","active":true,"source":"SOLAR1","proton_speed":455,
             "proton_density":6,"proton_temperature":100000}])"));
    QVERIFY(TestEnvironment::writeFile(
        data + "/NowMessages.json",
        R"([{"product_id":"K05A","issue_datetime":"2026-05-01 07:15:51.603","message":
             "Space Weather Message Code: ALTK05\r\nSerial Number: 2033\r\n\r\nALERT: Kp 5\r\n"},
            {"product_id":"K04W","issue_datetime":"2026-05-01 10:00:00.000","message":
             "Space Weather Message Code: WARK04\r\nSerial Number: 100\r\n\r\nWARNING: Kp 4\r\n"}])"));
    {
        NowSamples wind;
        for (qint64 time = now - 3 * 86400; time <= now; time += 600)
            wind.append({"speed", time, 400.0 + double(time / 600 % 50), "SOLAR1"});
        NowHistory history(NowHistory::pathInFolder(data));
        QCOMPARE(history.merge("solar-wind", wind, now, 400), wind.size());
    }

    NowRecorder recorder(NowHistory::pathInFolder(data));
    FlatGroup group(QStringLiteral("Now"), GroupCatalogue::Now);
    QVERIFY(group.loadDictionaryData("DataNow.plist", data));
    NowView view(&group);
    view.groupLoaded(&recorder);
    view.resize(1100, 900);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    // The X-ray value is 2 h 10 min old, past its 15 minutes; the solar wind is current.
    NowValueTile *xray = tile(view, "X-ray flux");
    QTRY_COMPARE(xray->value(), "C2.3");
    QVERIFY(xray->isStale());
    QVERIFY2(xray->age().endsWith("stale: 2 h 10 min old"), qPrintable(xray->age()));
    NowValueTile *wind = tile(view, "Solar wind");
    QCOMPARE(wind->value(), "455 km/s");
    QVERIFY(!wind->isStale());
    QVERIFY2(wind->age().endsWith(", 5 min old"), qPrintable(wind->age()));
    QCOMPARE(tile(view, "Planetary K index")->value(), "no data");

    // Every chart follows the range; a new view starts with the one chosen last.
    const QList<NowChartView *> charts = view.charts()->charts();
    NowChartView *windChart = charts.at(2);
    for (const auto &[name, span] : {std::pair{"1 day", 86400}, std::pair{"27 days", 27 * 86400}}) {
        button(&view, name)->click();
        QTRY_COMPARE(windChart->spanTo() - windChart->spanFrom(), span);
        QCOMPARE(charts.at(1)->spanTo() - charts.at(1)->spanFrom(), span);
        QCOMPARE(charts.at(0)->spanFrom(), now - span); // the K index looks ahead too
    }
    QCOMPARE(NowCharts().range(), 27 * 86400);

    // The mouse near the present in the X-ray chart: each chart tells its values at that time.
    const QRectF plot = charts.at(1)->chart()->plotArea();
    const QPoint at = charts.at(1)->mapFromScene(
        charts.at(1)->chart()->mapToScene(QPointF(plot.right() - 4, plot.center().y())));
    QTest::mouseMove(charts.at(1)->viewport(), at);
    QVERIFY2(windChart->readout().contains(QRegularExpression("\nSpeed 4\\d\\d\\.\\d km/s")),
             qPrintable(windChart->readout()));
    QCOMPARE(windChart->readout().section('\n', 0, 0), charts.at(1)->readout().section('\n', 0, 0));

    // The messages, newest first; the one chosen is shown whole.
    QTreeWidget *list = view.messages()->list();
    QTRY_COMPARE(list->topLevelItemCount(), 2);
    QCOMPARE(list->topLevelItem(0)->text(1), "WARK04");
    QCOMPARE(list->topLevelItem(1)->text(3), "ALERT: Kp 5");
    list->setCurrentItem(list->topLevelItem(1));
    QCOMPARE(view.messages()->text()->toPlainText(),
             "Space Weather Message Code: ALTK05\nSerial Number: 2033\n\nALERT: Kp 5\n");
}

VANTOREL_TEST_MAIN(TestNowView)
#include "test_now_view.moc"
