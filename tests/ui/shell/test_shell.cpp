#include "../UiFixture.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"
#include "ui/alerts/AlertsView.h"
#include "ui/common/ClickableTextBlue.h"
#include "ui/common/ClickableTextOrange.h"
#include "ui/moon/MoonView.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/PreferencesPanel.h"
#include "ui/shell/ToolbarCustomizer.h"
#include "ui/sources/GroupView.h"

#include <QApplication>
#include <QCheckBox>
#include <QListWidget>
#include <QSettings>
#include <QSpinBox>
#include <QStackedWidget>
#include <QToolBar>

// The shell around the views: the toolbar, its customisation and the online state, view
// switching, the menus' enabling, the preferences panel and the link fields.
class TestShell : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }
    void cleanup()
    {
        delete _app;
        _app = nullptr;
    }
    void toolbarFollowsTheOnlineState();
    void switchingViews_data();
    void switchingViews();
    void customisingTheToolbar();
    void menuEnabling_data();
    void menuEnabling();
    void preferencesPanel();
    void linkField_data();
    void linkField();
    void linkHover();

private:
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
};

void TestShell::toolbarFollowsTheOnlineState()
{
    // A stored toolbar is shown without the items that are unknown or repeated.
    QSettings().setValue("isOnline", 0);
    QSettings().setValue(
        "toolbar", QStringList({"Update", "Cancel", "Pluto", "Online", "Offline", "Sun", "Sun"}));
    _app = startApplication();
    QCOMPARE(toolbar(), QStringList({"Update", "Cancel", "Online", "Offline", "Sun"}));
    const auto states = [this] {
        QString enabled;
        for (const char *id : {"Update", "Cancel", "Online", "Offline", "Sun"})
            enabled += toolbarItem(id)->isEnabled() ? '1' : '0';
        return enabled;
    };
    QCOMPARE(states(), "01101");
    toolbarItem("Online")->trigger();
    QVERIFY(Preferences::shared().isOnline());
    QVERIFY(_app->core()->schedulerRunning());
    QCOMPARE(states(), "11011");
    toolbarItem("Offline")->trigger();
    QVERIFY(!Preferences::shared().isOnline());
    QVERIFY(!_app->core()->schedulerRunning());
    QCOMPARE(states(), "01101");
}

void TestShell::switchingViews_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    const QStringList names{"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon"};
    for (int i = 0; i < 6; ++i)
        QTest::addRow("%s", qPrintable(names[i])) << i << names[i];
}

void TestShell::switchingViews()
{
    QFETCH(int, number);
    QFETCH(QString, name);
    _app = startApplication();
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

void TestShell::customisingTheToolbar()
{
    _app = startApplication();
    QCOMPARE(toolbar(), QStringList({"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon", "~",
                                     "Online", "Offline", "|", "NSToolbarCustomizeToolbarItem"}));
    // View > Customize Toolbar… opens the customizer, in which the user edits and accepts.
    QStringList chosen;
    QTimer::singleShot(0, this, [&chosen] {
        auto *dialog = qobject_cast<ToolbarCustomizer *>(QApplication::activeModalWidget());
        if (!dialog)
            qFatal("No toolbar customizer");
        const auto add = [dialog](const QString &identifier) {
            QListWidget *available = dialog->availableList();
            for (int i = 0; i < available->count(); ++i) {
                if (available->item(i)->data(Qt::UserRole) == identifier)
                    available->setCurrentRow(i);
            }
            dialog->addSelected();
        };
        dialog->toolbarList()->setCurrentRow(0);
        add("Prefs"); // after the selected item
        add("Prefs"); // a real item appears once
        add("NSToolbarSeparatorItem");
        add("NSToolbarSeparatorItem"); // separators may repeat
        dialog->toolbarList()->setCurrentRow(0);
        dialog->removeSelected(); // the Sun
        dialog->moveSelected(1);  // the Prefs item, now first
        chosen = dialog->identifiers();
        dialog->accept();
    });
    menuItem(_app->window(), "View", "Customize Toolbar…")->trigger();
    const QString separator = "NSToolbarSeparatorItem";
    QCOMPARE(chosen.mid(0, 4), QStringList({separator, "Prefs", separator, "Graphs"}));
    QCOMPARE(chosen.count("Prefs"), 1);
    QCOMPARE(QSettings().value("toolbar").toStringList(), chosen);
    toolbarItem("Prefs")->trigger();
    QVERIFY(_app->preferencesPanel()->isVisible());
}

void TestShell::menuEnabling_data()
{
    QTest::addColumn<int>("view");
    QTest::addColumn<QString>("state");    // of the node selected in the Sun and Alerts views
    QTest::addColumn<QString>("expected"); // Reload, Cancel, Zoom, Save, Reveal, Schedule
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

void TestShell::menuEnabling()
{
    QFETCH(int, view);
    QFETCH(QString, state);
    QFETCH(QString, expected);
    TestHttpServer server;
    server.stall("/stall");
    const QString definitions = TestEnvironment::makeFolder("definitions");
    const auto entry = [&server](const QString &dest) {
        return TestEnvironment::nodeDict(dest, dest, server.baseUrl(), "stall");
    };
    QVERIFY(TestEnvironment::writePropertyList(
        definitions + "/DataSun.plist",
        {{"Domain0", QVariantMap{{"DomainName", "Disc"}, {"Node0", entry("sun.png")}}}}));
    QVERIFY(TestEnvironment::writePropertyList(definitions + "/DataAlerts.plist",
                                               {{"Node0", entry("RSGA.txt")}}));
    ResourceLocator::setDefinitionsFolder(definitions);
    QSettings().setValue("isOnline", 0); // nothing is fetched unasked
    _app = startApplication();
    Node *sun = _app->core()->sunGroup()->allNodes().first();
    Node *report = _app->core()->alertsGroup()->nodeAt(0);
    for (Node *node : {sun, report}) {
        node->removeDataFile(); // from an earlier row
        if (state != QLatin1String("missing"))
            writeFile(node->filePath(), "data");
    }
    _app->sunView()->outlineShouldSelectItem(sun);
    _app->alertsView()->selectNodeFromList();
    _app->setGroupView(view);
    // The menus follow the queue and the cache by themselves.
    if (state == QLatin1String("queued")) {
        _app->core()->sunGroup()->addNodeToDownloadQueue(sun);
        _app->core()->alertsGroup()->addNodeToDownloadQueue(report);
    } else if (state == QLatin1String("emptied")) {
        _app->core()->emptyGroupCaches();
    }
    QString enabled;
    for (QAction *item : {menuItem(_app->window(), "Node", "Reload"),
                          menuItem(_app->window(), "Node", "Cancel Download"),
                          menuItem(_app->window(), "Node", "Zoom Image"),
                          menuItem(_app->window(), "File", "Save a Copy…"),
                          menuItem(_app->window(), "Node", "Reveal in File Manager"),
                          menuItem(_app->window(), "Node", "Schedule…")})
        enabled += item->isEnabled() ? '1' : '0';
    QCOMPARE(enabled, expected);
    if (view == 0) // the view's buttons agree
        QCOMPARE(enabledButtons(_app->sunView(), {"Zoom", "Show File"}),
                 (QList<bool>{expected[2] == '1', expected[4] == '1'}));
    _app->cancelAllDownloads();
}

void TestShell::preferencesPanel()
{
    QSettings().setValue("timeoutSeconds", 42.9);
    _app = startApplication();
    Preferences &preferences = Preferences::shared();
    preferences.setBeepOnErrors(true);
    menuItem(_app->window(), "Edit", "Preferences…")->trigger();
    PreferencesPanel *panel = _app->preferencesPanel();
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->timeoutValueField()->value(), 42); // truncated toward zero
    // Each box shows its preference and changes it at once.
    QString shown;
    for (QCheckBox *box : {panel->logErrorsOnlyButton(), panel->beepOnErrorsButton(),
                           panel->downloadMissingDataButton(), panel->southernHemisphereButton()}) {
        shown += box->isChecked() ? '1' : '0';
        box->click();
    }
    QCOMPARE(shown, "0110");
    QCOMPARE((QList<bool>{preferences.logErrorsOnly(), preferences.beepOnErrors(),
                          preferences.downloadMissingData(), preferences.southernHemisphere()}),
             (QList<bool>{true, false, false, true}));
    QVERIFY(_app->moonView()->southernHemisphere()); // told at once
    panel->timeoutValueField()->setValue(30);
    QCOMPARE(preferences.timeoutSeconds(), 30.0f);
    panel->timeoutValueField()->setValue(0); // no limits of its own
    QCOMPARE(preferences.timeoutSeconds(), 0.0f);
    QCOMPARE(QSettings().value("logErrorsOnly"), QVariant()); // stored only at quit
}

void TestShell::linkField_data()
{
    // Press, moves, release, relative to a field of 60 x 20. A click counts where it ends.
    QTest::addColumn<bool>("orange");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<QPoint>>("path");
    QTest::addColumn<int>("clicks");
    const QPoint in(10, 10);
    const QPoint out(200, 10);
    const QString link("https://example.org");
    QTest::newRow("inside") << false << link << QList<QPoint>{in, in} << 1;
    QTest::newRow("released outside") << false << link << QList<QPoint>{in, out, out} << 0;
    QTest::newRow("out and back in") << false << link << QList<QPoint>{in, out, in, in} << 1;
    QTest::newRow("blue with no text ignores it") << false << "" << QList<QPoint>{in, in} << 0;
    QTest::newRow("orange with no text still clicks") << true << "" << QList<QPoint>{in, in} << 1;
}

void TestShell::linkField()
{
    QFETCH(bool, orange);
    QFETCH(QString, text);
    QFETCH(QList<QPoint>, path);
    QFETCH(int, clicks);
    std::unique_ptr<ClickableText> field(
        orange ? static_cast<ClickableText *>(new ClickableTextOrange) : new ClickableTextBlue);
    field->setText(text);
    field->resize(60, 20);
    field->show();
    QSignalSpy spy(field.get(), &ClickableText::clicked);
    QTest::mousePress(field.get(), Qt::LeftButton, {}, path.first());
    // Highlighted while pressed, at rest again afterwards.
    QCOMPARE(field->textColour() == field->highlightColour(), clicks > 0 || path.size() > 2);
    for (qsizetype i = 1; i + 1 < path.size(); ++i)
        QTest::mouseMove(field.get(), path[i]);
    QTest::mouseRelease(field.get(), Qt::LeftButton, {}, path.last());
    QCOMPARE(spy.count(), clicks);
    QCOMPARE(field->textColour(), field->restingColour());
}

void TestShell::linkHover()
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
    QCOMPARE(field->highlightColour(), QColor::fromRgbF(0, 0, 0.75f));
    QCOMPARE(ClickableTextOrange().highlightColour(), QColor::fromRgbF(0.7f, 0.2f, 0));
    QCOMPARE(field->textColour(), resting);
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(field, &enter);
    QCOMPARE(field->textColour(), field->highlightColour());
    QCOMPARE(field->cursor().shape(), Qt::PointingHandCursor);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(field, &leave);
    QCOMPARE(field->textColour(), resting);
    QCOMPARE(field->cursor().shape(), Qt::ArrowCursor);
}

VANTOREL_TEST_MAIN(TestShell)
#include "test_shell.moc"
