#include "../UiFixture.h"

#include "ui/sources/NodeScheduler.h"

#include <QScreen>
#include <QSplitter>
#include <QToolBar>

// Every key of the settings filled with garbage, negative or huge values, as a damaged file or a
// careless hand edit leaves them: the application must start, behave as the nearest sensible
// value would, and end by storing sensible values again.
class TestBadSettings : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }
    void cleanup()
    {
        delete _app;
        _app = nullptr;
    }

    void startsAndBehaves_data()
    {
        QTest::addColumn<QVariant>("garbage");
        QTest::newRow("text") << QVariant("}{ not at all %s %n");
        QTest::newRow("negative") << QVariant(-2147483647);
        QTest::newRow("huge") << QVariant("1e300");
        QTest::newRow("bytes") << QVariant(QByteArray("\x01\xd9\xd0\xcb\xff\x00\x13", 7));
        QTest::newRow("a list") << QVariant(QStringList{"{{-5, -5}, {-9, 99999999}}", "junk", "7"});
    }

    void startsAndBehaves()
    {
        QFETCH(QVariant, garbage);
        QStringList keys = QString("lastView,isOnline,logErrorsOnly,beepOnErrors,"
                                   "downloadMissingData,timeoutSeconds,southernHemisphere,"
                                   "MainWindow,ActivityLogWindow,SDO Expanded,SOHO Expanded,"
                                   "Sun LastNodeViewed,AlertsViewSize,lastAlertMenuIndex,"
                                   "MoonViewSize,toolbar,notifyKpThreshold,notifyFlareClass,"
                                   "notifyMessageFamilies,homeLatitude,homeLongitude,quietHours,"
                                   "quietHoursStart,watchSeenMessages,watchHeldEvents")
                               .split(',');
        for (const QString view : {"Sun", "Graphs", "Aurora", "Earth"})
            keys << view + "ViewSize" << view + "ViewSplitViewRects";
        for (const QString &key : keys)
            QSettings().setValue(key, garbage);
        _app = startApplication();
        QMainWindow *window = _app->window();
        QVERIFY(window->isVisible());
        // A window that fits on the screen, whatever frame was stored.
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QVERIFY(window->width() > 0 && window->height() > 0);
        QVERIFY(window->width() <= std::max(screen.width(), window->minimumSizeHint().width()));
        // An unknown view number shows the Sun; the toolbar falls back to the default set.
        auto *stack = qobject_cast<QStackedWidget *>(window->centralWidget());
        if (_app->lastView() < 0 || _app->lastView() > 6)
            QCOMPARE(stack->currentWidget(), _app->sunView());
        QCOMPARE(window->findChild<QToolBar *>()->actions().size(), 12); // the default twelve
        // The Alerts view shows a report: the stored index is clamped into the list.
        FlatGroup *alerts = _app->core()->alertsGroup();
        QVERIFY(alerts->selectedNode());
        QCOMPARE(_app->alertsView()->findChild<QComboBox *>()->currentIndex(),
                 alerts->indexOf(alerts->selectedNode()));
        for (QWidget *view : _app->views()) // every view has a size a screen can hold
            QVERIFY(view->width() >= 0 && view->width() <= 16384 && view->height() >= 0 &&
                    view->height() <= 16384);
        for (int i = 0; i < 6; ++i)
            _app->setGroupView(i); // each view can be shown
        for (int size : _app->sunView()->findChild<QSplitter *>()->sizes())
            QVERIFY(size >= 0);

        // The shutdown stores sensible values back.
        _app->applicationWillTerminate();
        QSettings after;
        for (const char *key : {"SunViewSize", "AlertsViewSize", "MoonViewSize"})
            QVERIFY2(after.value(key).toString().startsWith('{'), key);
        const int index = after.value("lastAlertMenuIndex").toInt();
        QVERIFY(index >= 0 && index < alerts->nodeCount() + 1);
        QCOMPARE(after.value("SunViewSplitViewRects").toStringList().size(), 2);
    }

    void damagedNodeKeys()
    {
        const QList<std::pair<const char *, QVariant>> keys{
            {"autoUpdateRateNodeRSGA.txt", -7},
            {"autoUpdateRateNodeWKHF.txt", 1000},
            {"autoUpdateNodeRSGA.txt", "yes please"},
            {"autoUpdateNodeWKHF.txt", 5},
            {"downloadAtStartupNodeRSGA.txt", QStringList{"a", "b"}},
            {"lastUpdateForNodeRSGA.txt", "Monday, Feb 30 2026 at 10:00 AM"},
            {"lastUpdateForNodeWKHF.txt", 12345}};
        for (const auto &[key, value] : keys)
            QSettings().setValue(key, value);
        _app = startApplication();
        Node *rsga = _app->core()->alertsGroup()->nodeNamed("RSGA.txt");
        Node *wkhf = _app->core()->alertsGroup()->nodeNamed("WKHF.txt");
        QVERIFY(rsga && wkhf);
        // Rates outside the table act as five minutes; unreadable switches read as off.
        QCOMPARE(rsga->nextUpdateInMinutes(), 5);
        QCOMPARE(wkhf->nextUpdateInMinutes(), 5);
        QVERIFY(!rsga->autoUpdates());
        QVERIFY(wkhf->autoUpdates());
        QVERIFY(!rsga->downloadsAtStartup());
        QCOMPARE(rsga->lastUpdate(), "Unknown");
        // The schedule sheet shows no rate until the user picks one.
        _app->nodeScheduler()->setMyNode(wkhf);
        QCOMPARE(_app->nodeScheduler()->autoUpdateTimeMenu()->currentIndex(), -1);
    }

private:
    AppController *_app = nullptr;
};

VANTOREL_TEST_MAIN(TestBadSettings)
#include "test_badsettings.moc"
