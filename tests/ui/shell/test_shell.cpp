#include "../UiFixture.h"
#include "TestHttpServer.h"

#include "ui/common/ClickableTextBlue.h"
#include "ui/shell/PreferencesPanel.h"

#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QSpinBox>
#include <QToolBar>

// The shell around the views: the toolbar and the online state, view
// switching, the menus' enabling, the preferences panel and the link colours.
class TestShell : public QObject {
    Q_OBJECT

    QList<QAction *> toolbarActions() const
    {
        return _app->window()->findChild<QToolBar *>()->actions();
    }
    // The toolbar as the user sees it: the items, "|" for a separator, "~" for a space.
    QStringList toolbar() const
    {
        QStringList items;
        for (QAction *action : toolbarActions())
            items << (action->isSeparator()      ? QString("|")
                      : action->data().isValid() ? action->data().toString()
                                                 : QString("~"));
        return items;
    }
    QAction *toolbarItem(const QString &identifier) const
    {
        for (QAction *action : toolbarActions()) {
            if (action->data() == identifier)
                return action;
        }
        qFatal("No toolbar item %s", qPrintable(identifier));
    }
    AppController *_app = nullptr;

private slots:
    // Hours and a half from UTC: a time shown in UTC cannot pass for a local one.
    void initTestCase() { qputenv("TZ", "Asia/Kolkata"); }
    void init() { TestEnvironment::resetState(); }
    void cleanup()
    {
        delete _app;
        _app = nullptr;
    }

    void toolbarFollowsTheOnlineState()
    {
        // A stored toolbar is shown without the items that are unknown or repeated; one stored
        // before the Now view existed gains it after the Moon.
        QSettings().setValue("isOnline", 0);
        QSettings().setValue("toolbar", QStringList({"Update", "Cancel", "Pluto", "Online",
                                                     "Offline", "Sun", "Sun", "Moon"}));
        _app = startApplication();
        const QStringList shown{"Update", "Cancel", "Online", "Offline", "Sun", "Moon", "Now"};
        QCOMPARE(toolbar(), shown);
        const auto states = [&] {
            return enabledActions({toolbarItem("Update"), toolbarItem("Cancel"),
                                   toolbarItem("Online"), toolbarItem("Offline"),
                                   toolbarItem("Sun")});
        };
        QCOMPARE(states(), "01101");
        toolbarItem("Online")->trigger();
        QVERIFY(Preferences::shared().isOnline() && _app->core()->schedulerRunning());
        QCOMPARE(states(), "11011");
        toolbarItem("Offline")->trigger();
        QVERIFY(!Preferences::shared().isOnline() && !_app->core()->schedulerRunning());
        QCOMPARE(states(), "01101");
    }

    void switchingViews_data()
    {
        columns<int, QString>("number", "name");
        const QStringList names{"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon", "Now"};
        for (int i = 0; i < 7; ++i)
            QTest::addRow("%s", qPrintable(names[i])) << i << names[i];
    }
    void switchingViews()
    {
        const int number = fetch<int>("number");
        const QString name = fetch<QString>("name");
        _app = startApplication();
        QCOMPARE(toolbar(),
                 QStringList({"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon", "Now", "~",
                              "Online", "Offline", "|", "NSToolbarCustomizeToolbarItem"}));
        auto *stack = qobject_cast<QStackedWidget *>(_app->window()->centralWidget());
        const QRect frame = _app->window()->geometry();
        QAction *item = menuItem(_app->window(), "View", name);
        QCOMPARE(item->shortcut(), QKeySequence(QString("Ctrl+%1").arg(number + 1)));
        item->trigger();
        QCOMPARE(stack->currentIndex(), number);
        QCOMPARE(_app->lastView(), number);
        for (QAction *action : toolbarActions()) // only its item is marked
            QCOMPARE(action->isChecked(), action->data() == name);
        QCOMPARE(_app->window()->geometry(), frame); // the window keeps its frame
        _app->setGroupView(number == 0 ? 5 : 0);
        toolbarItem(name)->trigger();
        QCOMPARE(stack->currentIndex(), number);
    }

    void menuEnabling_data()
    {
        // The state of the node selected in the Sun and Alerts views; then whether Reload,
        // Cancel Download, Zoom Image, Save a Copy…, Reveal and Schedule… are enabled.
        columns<int, QString, QString>("view", "state", "expected");
        const auto row = [](const char *name, int view, const char *state, const char *expected) {
            QTest::newRow(name) << view << QString(state) << QString(expected);
        };
        row("Sun, data", 0, "data", "101111");
        row("Sun, no data", 0, "missing", "100001");
        row("Sun, queued", 0, "queued", "111111");
        row("Sun, cache emptied", 0, "emptied", "100001");
        row("Graphs, nothing selected", 1, "data", "000000");
        row("Alerts, data", 4, "data", "100011");
        row("Alerts, queued", 4, "queued", "110011");
        row("Alerts, cache emptied", 4, "emptied", "100001");
        row("Moon", 5, "data", "000000");
    }
    void menuEnabling()
    {
        const QString state = fetch<QString>("state");
        const QString expected = fetch<QString>("expected");
        TestHttpServer server;
        server.stall("/stall");
        const auto entry = [&server](const QString &dest) {
            return TestEnvironment::nodeDict(dest, dest, server.baseUrl(), "stall");
        };
        const QString sunFile = TestEnvironment::installDefinitions(
            "DataSun.plist",
            {{"Domain0", QVariantMap{{"DomainName", "Disc"}, {"Node0", entry("sun.png")}}}});
        QVERIFY(TestEnvironment::writePropertyList(
            QFileInfo(sunFile).dir().filePath("DataAlerts.plist"), {{"Node0", entry("RSGA.txt")}}));
        QSettings().setValue("isOnline", 0); // nothing is fetched unasked
        _app = startApplication();
        Node *sun = _app->core()->sunGroup()->allNodes().first();
        Node *report = _app->core()->alertsGroup()->nodeAt(0);
        for (Node *node : {sun, report}) {
            node->removeDataFile(); // from an earlier row
            QVERIFY(state == "missing" || TestEnvironment::writeFile(node->filePath(), "data"));
        }
        _app->sunView()->outlineShouldSelectItem(sun);
        _app->alertsView()->selectNodeFromList();
        _app->setGroupView(fetch<int>("view"));
        // The menus follow the queue and the cache by themselves.
        if (state == "queued") {
            _app->core()->sunGroup()->addNodeToDownloadQueue(sun);
            _app->core()->alertsGroup()->addNodeToDownloadQueue(report);
        } else if (state == "emptied") {
            _app->core()->emptyGroupCaches();
        }
        const QMainWindow *w = _app->window();
        QCOMPARE(
            enabledActions({menuItem(w, "Node", "Reload"), menuItem(w, "Node", "Cancel Download"),
                            menuItem(w, "Node", "Zoom Image"), menuItem(w, "File", "Save a Copy…"),
                            menuItem(w, "Node", "Reveal in File Manager"),
                            menuItem(w, "Node", "Schedule…")}),
            expected);
        if (fetch<int>("view") == 0) // the view's buttons agree
            QCOMPARE(enabledButtons(_app->sunView(), {"Zoom", "Show File"}),
                     QString(expected[2]) + expected[4]);
        _app->cancelAllDownloads();
    }

    void preferencesPanel()
    {
        _app = startApplication();
        Preferences &preferences = Preferences::shared();
        preferences.setBeepOnErrors(true);
        menuItem(_app->window(), "Edit", "Preferences…")->trigger();
        PreferencesPanel *panel = _app->preferencesPanel();
        QVERIFY(panel->isVisible());
        // Each box shows its preference and changes it at once.
        QString shown;
        for (QCheckBox *box :
             {panel->logErrorsOnlyButton(), panel->beepOnErrorsButton(),
              panel->downloadMissingDataButton(), panel->southernHemisphereButton()}) {
            shown += box->isChecked() ? '1' : '0';
            box->click();
        }
        QCOMPARE(shown, "0110");
        QCOMPARE((QList<bool>{preferences.logErrorsOnly(), preferences.beepOnErrors(),
                              preferences.downloadMissingData(), preferences.southernHemisphere()}),
                 (QList<bool>{true, false, false, true}));
        QVERIFY(_app->moonView()->southernHemisphere()); // told at once
        panel->timeoutValueField()->setValue(0);         // no limits of its own
        QCOMPARE(preferences.timeoutSeconds(), 0.0f);
        // The location typed reaches the watcher's settings once both fields read.
        QTest::keyClicks(panel->latitudeField(), "60.5");
        QVERIFY(!preferences.notifications().hasLocation());
        QTest::keyClicks(panel->longitudeField(), "-105");
        QCOMPARE(preferences.notifications().longitude, -105.0);
    }

    // View > Show Times in UTC (on at first) changes the times shown at once, and View >
    // Appearance the palette; both are remembered.
    void displayChoices()
    {
        QSettings().setValue(Node::lastUpdateKey("RSGA.txt"), "Monday, Nov 16 2026 at 05:57 PM");
        _app = startApplication();
        QLabel *shown = _app->alertsView()->nodeLastUpdateField();
        QCOMPARE(shown->text(), "Last Updated: Monday, Nov 16 2026 at 12:27 PM UTC");
        menuItem(_app->window(), "View", "Show Times in UTC")->trigger();
        QCOMPARE(shown->text(), "Last Updated: Monday, Nov 16 2026 at 05:57 PM");
        const QList<QAction *> appearances =
            menuItem(_app->window(), "View", "Appearance")->menu()->actions();
        appearances.last()->trigger(); // Dark
        QTRY_VERIFY(shown->palette().color(QPalette::Window).lightness() < 128);
        _app->savePreferences();
        QCOMPARE(QSettings().value("showTimesInUTC").toInt(), 0);
        QCOMPARE(QSettings().value("appearance").toInt(), 2);
        appearances.first()->trigger(); // the desktop's, for the tests that follow
    }

    void linkColours()
    {
        // In a dark window the link rests in the window's text colour, before and after a hover.
        const QColor resting(230, 230, 230);
        QWidget parent;
        QPalette colours = parent.palette();
        colours.setColor(QPalette::Window, QColor(30, 30, 30));
        colours.setColor(QPalette::WindowText, resting);
        parent.setPalette(colours);
        auto *field = new ClickableTextBlue(&parent);
        field->setText("https://example.org");
        parent.show();
        QCOMPARE(field->textColour(), resting);
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(field, &enter);
        QCOMPARE(field->textColour(), field->highlightColour());
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(field, &leave);
        QCOMPARE(field->textColour(), resting);
        QSignalSpy clicked(field, &ClickableText::clicked);
        QTest::mouseClick(field, Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(clicked.count(), 1);
    }
};

VANTOREL_TEST_MAIN(TestShell)
#include "test_shell.moc"
