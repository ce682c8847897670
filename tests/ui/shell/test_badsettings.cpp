#include "TestEnvironment.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/shell/ToolbarItems.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "ui/alerts/AlertsView.h"
#include "ui/log/ActivityLog.h"
#include "ui/moon/MoonView.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainToolbar.h"
#include "ui/shell/MainWindow.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/NodeScheduler.h"

#include <QApplication>
#include <QComboBox>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QtTest>

// Every key of the settings filled with garbage, negative or huge values, as a damaged file or a
// careless hand edit leaves them: the application must start, behave as the nearest sensible
// value would, and end by storing sensible values again.
class TestBadSettings : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }
    void cleanup()
    {
        delete _controller;
        _controller = nullptr;
    }
    void startsAndBehaves_data();
    void startsAndBehaves();
    void damagedNodeKeys();

private:
    void start()
    {
        _controller = AppController::create();
        _controller->awakeFromNib();
        _controller->applicationDidFinishLaunching();
    }
    AppController *_controller = nullptr;
};

void TestBadSettings::startsAndBehaves_data()
{
    QTest::addColumn<QVariant>("garbage");
    QTest::newRow("text") << QVariant(QStringLiteral("}{ not at all %s %n"));
    QTest::newRow("negative") << QVariant(-2147483647);
    QTest::newRow("huge") << QVariant(QStringLiteral("1e300"));
    QTest::newRow("bytes") << QVariant(QByteArray("\x01\xd9\xd0\xcb\xff\x00\x13", 7));
    QTest::newRow("a list") << QVariant(QStringList{"{{-5, -5}, {-9, 99999999}}", "junk", "7"});
}

void TestBadSettings::startsAndBehaves()
{
    QFETCH(QVariant, garbage);
    const QStringList keys = {"lastView",
                              "isOnline",
                              "logErrorsOnly",
                              "beepOnErrors",
                              "downloadMissingData",
                              "timeoutSeconds",
                              "southernHemisphere",
                              "MainWindow",
                              "ActivityLogWindow",
                              "SunViewSize",
                              "GraphsViewSize",
                              "AuroraViewSize",
                              "EarthViewSize",
                              "SunViewSplitViewRects",
                              "GraphsViewSplitViewRects",
                              "AuroraViewSplitViewRects",
                              "EarthViewSplitViewRects",
                              "SDO Expanded",
                              "SOHO Expanded",
                              "Sun LastNodeViewed",
                              "AlertsViewSize",
                              "lastAlertMenuIndex",
                              "MoonViewSize",
                              "toolbar"};
    QSettings settings;
    for (const QString &key : keys)
        settings.setValue(key, garbage);
    settings.sync();

    start();
    MainWindow *window = _controller->window();
    QVERIFY(window->isVisible());
    // A window that fits on the screen, whatever frame was stored.
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QVERIFY(window->width() > 0 && window->height() > 0);
    QVERIFY(window->width() <= std::max(screen.width(), window->minimumSizeHint().width()));
    // An unknown view number shows the Sun; the toolbar falls back to the default set.
    auto *stack = qobject_cast<QStackedWidget *>(window->centralWidget());
    if (_controller->lastView() < 0 || _controller->lastView() > 5)
        QCOMPARE(stack->currentWidget(), _controller->sunView());
    QCOMPARE(_controller->mainToolbar()->identifiers(), ToolbarItems::defaultItemIdentifiers());
    // The Alerts view shows a report: the stored index is clamped into the list.
    FlatGroup *alerts = _controller->core()->alertsGroup();
    QVERIFY(alerts->selectedNode());
    QCOMPARE(_controller->alertsView()->nodeListMenu()->currentIndex(),
             alerts->indexOf(alerts->selectedNode()));
    // Every view has a size a screen can hold.
    for (QWidget *view : _controller->views()) {
        QVERIFY(view->width() >= 0 && view->width() <= 16384);
        QVERIFY(view->height() >= 0 && view->height() <= 16384);
    }
    for (int i = 0; i < 6; ++i)
        _controller->setGroupView(i); // each view can be shown
    const QList<int> sizes = _controller->sunView()->splitView()->sizes();
    for (int size : sizes)
        QVERIFY(size >= 0);

    // The shutdown stores sensible values back.
    _controller->applicationWillTerminate();
    QSettings after;
    for (const char *key : {"SunViewSize", "AlertsViewSize", "MoonViewSize"}) {
        const QString text = after.value(QLatin1String(key)).toString();
        QVERIFY2(text.startsWith(QLatin1Char('{')), qPrintable(text));
    }
    const int index = after.value(QStringLiteral("lastAlertMenuIndex")).toInt();
    QVERIFY(index >= 0 && index < alerts->nodeCount() + 1);
    QCOMPARE(after.value(QStringLiteral("SunViewSplitViewRects")).toStringList().size(), 2);
}

void TestBadSettings::damagedNodeKeys()
{
    QSettings settings;
    const struct {
        const char *key;
        QVariant value;
    } keys[] = {
        {"autoUpdateRateNodeRSGA.txt", -7},
        {"autoUpdateRateNodeWKHF.txt", 1000},
        {"autoUpdateNodeRSGA.txt", QStringLiteral("yes please")},
        {"autoUpdateNodeWKHF.txt", 5},
        {"downloadAtStartupNodeRSGA.txt", QStringList{"a", "b"}},
        {"lastUpdateForNodeRSGA.txt", QStringLiteral("Monday, Feb 30 2026 at 10:00 AM")},
        {"lastUpdateForNodeWKHF.txt", 12345},
    };
    for (const auto &entry : keys)
        settings.setValue(QLatin1String(entry.key), entry.value);
    TestEnvironment::setNow(QDateTime(QDate(2026, 6, 6), QTime(6, 6)));
    start();

    FlatGroup *alerts = _controller->core()->alertsGroup();
    Node *rsga = alerts->nodeNamed(QStringLiteral("RSGA.txt"));
    Node *wkhf = alerts->nodeNamed(QStringLiteral("WKHF.txt"));
    QVERIFY(rsga && wkhf);
    // Rates outside the table act as five minutes; unreadable switches read as off.
    QCOMPARE(rsga->nextUpdateInMinutes(), 5);
    QCOMPARE(wkhf->nextUpdateInMinutes(), 5);
    QVERIFY(!rsga->autoUpdates());
    QVERIFY(wkhf->autoUpdates());
    QVERIFY(!rsga->downloadsAtStartup());
    // Texts that do not read back are no history at all.
    QCOMPARE(rsga->lastUpdate(), QStringLiteral("Unknown"));
    QCOMPARE(wkhf->lastUpdate(), QStringLiteral("Unknown"));
    QCOMPARE(wkhf->lastUpdateDate(), QDateTime(QDate(2026, 6, 6), QTime(6, 6)));
    // The schedule sheet shows no rate until the user picks one.
    _controller->nodeScheduler()->setMyNode(wkhf);
    QCOMPARE(_controller->nodeScheduler()->autoUpdateTimeMenu()->currentIndex(), -1);
}

VANTOREL_TEST_MAIN(TestBadSettings)
#include "test_badsettings.moc"
