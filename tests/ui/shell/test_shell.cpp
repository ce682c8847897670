#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/shell/ToolbarConfiguration.h"
#include "core/shell/ToolbarItems.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/ResourceLocator.h"
#include "ui/alerts/AlertsView.h"
#include "ui/common/ClickableTextBlue.h"
#include "ui/common/ClickableTextOrange.h"
#include "ui/moon/MoonView.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainToolbar.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/PreferencesPanel.h"
#include "ui/shell/ToolbarCustomizer.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/NodeScheduler.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStackedWidget>
#include <QToolBar>
#include <QTreeView>
#include <QtTest>

// The shell around the views: the toolbar and its customisation, view switching, the menus'
// enabling rule, the preferences panel, the schedule sheet and the link fields.
class TestShell : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void itemSets();
    void unknownIdentifier();
    void enablingFollowsTheOnlineState();
    void switchingViews_data();
    void switchingViews();
    void toolbarCommands();
    void customisationSavedAndRestored();
    void customizerEditing();
    void damagedConfiguration_data();
    void damagedConfiguration();
    void menuEnabling_data();
    void menuEnabling();
    void preferencesPanel();
    void scheduleSheet();
    void scheduleSheetOutOfRangeRate();
    void linkField_data();
    void linkField();
    void linkHover();
    void backgroundClickTakesFocus();

private:
    void start()
    {
        _controller = AppController::create();
        _controller->awakeFromNib();
        _controller->applicationDidFinishLaunching();
    }
    QToolBar *toolbar() const { return _controller->mainToolbar()->toolbar(); }
    QStringList toolbarIdentifiers() const
    {
        QStringList ids;
        for (QAction *action : toolbar()->actions())
            ids << (action->isSeparator() ? QStringLiteral("|") : action->data().toString());
        return ids;
    }
    AppController *_controller = nullptr;
};

void TestShell::init()
{
    TestEnvironment::resetState();
}

void TestShell::cleanup()
{
    delete _controller;
    _controller = nullptr;
}

void TestShell::itemSets()
{
    QCOMPARE(ToolbarItems::defaultItemIdentifiers(),
             QStringList({"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon",
                          ToolbarItems::kFlexibleSpace, "Online", "Offline",
                          ToolbarItems::kSeparator, ToolbarItems::kCustomize}));
    QCOMPARE(
        ToolbarItems::allowedItemIdentifiers(),
        QStringList({"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon", "Update", "Cancel",
                     "Online", "Offline", "Prefs", ToolbarItems::kSeparator, ToolbarItems::kSpace,
                     ToolbarItems::kFlexibleSpace, ToolbarItems::kCustomize}));
    QCOMPARE(ToolbarItems::selectableItemIdentifiers(),
             QStringList({"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon"}));

    // A first start shows the default set.
    start();
    QCOMPARE(toolbar()->objectName(), QStringLiteral("toolbar"));
    QCOMPARE(_controller->mainToolbar()->identifiers(), ToolbarItems::defaultItemIdentifiers());

    // Every item the user can add has its words and its picture; the view items are the ones
    // that show as selected.
    for (const QString &identifier : ToolbarItems::allowedItemIdentifiers()) {
        const auto item = ToolbarItems::item(identifier);
        if (!item)
            continue; // separator, space, flexible space and the customise item
        QAction *action = _controller->mainToolbar()->itemForItemIdentifier(identifier, this);
        QVERIFY2(!action->text().isEmpty(), qPrintable(identifier));
        QVERIFY2(!action->icon().isNull(), qPrintable(identifier));
        QCOMPARE(ToolbarCustomizer::paletteLabel(identifier), item->paletteLabel);
        QCOMPARE(action->isCheckable(),
                 ToolbarItems::selectableItemIdentifiers().contains(identifier));
    }
}

void TestShell::unknownIdentifier()
{
    start();
    QAction *action =
        _controller->mainToolbar()->itemForItemIdentifier(QStringLiteral("Pluto"), this);
    QVERIFY(action->text().isEmpty());
    QVERIFY(action->icon().isNull());
    _controller->setGroupView(3);
    action->trigger(); // does nothing
    QCOMPARE(_controller->lastView(), 3);
}

void TestShell::enablingFollowsTheOnlineState()
{
    QSettings().setValue(QStringLiteral("isOnline"), 0);
    QSettings().setValue(QStringLiteral("toolbar"),
                         QStringList({"Update", "Cancel", "Online", "Offline", "Prefs", "Sun"}));
    start();
    MainToolbar *bar = _controller->mainToolbar();
    const auto states = [bar] {
        QList<bool> list;
        for (const char *id : {"Update", "Cancel", "Online", "Offline", "Prefs", "Sun"})
            list << bar->item(QLatin1String(id))->isEnabled();
        return list;
    };
    QCOMPARE(states(), QList<bool>({false, true, true, false, true, true}));
    _controller->goOnline();
    QCOMPARE(states(), QList<bool>({true, true, false, true, true, true}));
    _controller->goOffline();
    QCOMPARE(states(), QList<bool>({false, true, true, false, true, true}));
    QCOMPARE(_controller->validateToolbarItem(QStringLiteral("Online")), true);
}

void TestShell::switchingViews_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("shown");
    QTest::addColumn<QString>("marked");
    for (int i = 0; i < 6; ++i)
        QTest::addRow("%d", i) << i << i << ToolbarItems::selectableItemIdentifiers().at(i);
    QTest::newRow("7") << 7 << 0 << "Sun";
    QTest::newRow("-1") << -1 << 0 << "Sun";
}

void TestShell::switchingViews()
{
    QFETCH(int, number);
    QFETCH(int, shown);
    QFETCH(QString, marked);
    start();
    const QRect frame = _controller->window()->geometry();
    _controller->setGroupView(number);
    auto *stack = qobject_cast<QStackedWidget *>(_controller->window()->centralWidget());
    QCOMPARE(stack->currentIndex(), shown);
    QCOMPARE(_controller->lastView(), number);
    QCOMPARE(_controller->mainToolbar()->selectedItemIdentifier(), marked);
    const auto checked = toolbar()->actions();
    for (QAction *action : checked) {
        if (action->isCheckable())
            QCOMPARE(action->isChecked(), action->data().toString() == marked);
    }
    QCOMPARE(_controller->window()->geometry(), frame); // the window keeps its frame
    // The menu items that switch views carry the view numbers as tags.
    _controller->setGroupViewFromMenu(_controller->menuItem(shown));
    QCOMPARE(stack->currentIndex(), shown);
}

void TestShell::toolbarCommands()
{
    start();
    _controller->didSelectToolbarItem(QStringLiteral("Moon"));
    QCOMPARE(_controller->lastView(), 5);
    _controller->didSelectToolbarItem(QStringLiteral("Offline"));
    QVERIFY(!_controller->isOnline());
    QVERIFY(!_controller->core()->schedulerRunning());
    _controller->didSelectToolbarItem(QStringLiteral("Online"));
    QVERIFY(_controller->isOnline());
    _controller->didSelectToolbarItem(QStringLiteral("Prefs"));
    QVERIFY(_controller->preferencesPanel()->isVisible());
    _controller->didSelectToolbarItem(QStringLiteral("Nothing"));
    QCOMPARE(_controller->lastView(), 5);
}

void TestShell::customisationSavedAndRestored()
{
    const QStringList chosen{"Prefs", "Moon", ToolbarItems::kSpace, "Sun", ToolbarItems::kSpace,
                             "Update"};
    start();
    _controller->mainToolbar()->setIdentifiers(chosen);
    _controller->mainToolbar()->saveConfiguration();
    QCOMPARE(QSettings().value(QStringLiteral("toolbar")).toStringList(), chosen);
    delete _controller;
    _controller = nullptr;

    start();
    QCOMPARE(_controller->mainToolbar()->identifiers(), chosen);
    QVERIFY(_controller->mainToolbar()->item(QStringLiteral("Prefs")));
    QVERIFY(!_controller->mainToolbar()->item(QStringLiteral("Graphs")));
}

void TestShell::customizerEditing()
{
    ToolbarCustomizer dialog({"Sun", "Moon"});
    QListWidget *available = dialog.availableList();
    const auto select = [available](const QString &id) {
        for (int i = 0; i < available->count(); ++i) {
            if (available->item(i)->data(Qt::UserRole).toString() == id)
                available->setCurrentRow(i);
        }
    };
    dialog.toolbarList()->setCurrentRow(0);
    select(QStringLiteral("Update"));
    dialog.addSelected(); // after the selected item
    QCOMPARE(dialog.identifiers(), QStringList({"Sun", "Update", "Moon"}));
    dialog.addSelected(); // a real item appears once
    QCOMPARE(dialog.identifiers().count(QStringLiteral("Update")), 1);
    select(QLatin1String(ToolbarItems::kSeparator));
    dialog.addSelected();
    dialog.addSelected(); // separators may repeat
    QCOMPARE(dialog.identifiers().count(QLatin1String(ToolbarItems::kSeparator)), 2);
    dialog.toolbarList()->setCurrentRow(0);
    dialog.moveSelected(1);
    QCOMPARE(dialog.identifiers().mid(0, 2), QStringList({"Update", "Sun"}));
    dialog.removeSelected();
    QVERIFY(!dialog.identifiers().contains(QStringLiteral("Sun")));
    dialog.restoreDefaults();
    QCOMPARE(dialog.identifiers(), ToolbarItems::defaultItemIdentifiers());
}

void TestShell::damagedConfiguration_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("unknown items dropped")
        << QVariant(QStringList{"Pluto", "Moon", "Moon", "Sun"}) << QStringList{"Moon", "Sun"};
    QTest::newRow("nothing usable: the default set")
        << QVariant(QStringList{"Pluto", "Vulcan"}) << ToolbarItems::defaultItemIdentifiers();
    QTest::newRow("not a list") << QVariant(42) << ToolbarItems::defaultItemIdentifiers();
}

void TestShell::damagedConfiguration()
{
    QFETCH(QVariant, stored);
    QFETCH(QStringList, expected);
    QSettings settings;
    settings.setValue(QStringLiteral("toolbar"), stored);
    QCOMPARE(ToolbarConfiguration::load(settings), expected);
}

void TestShell::menuEnabling_data()
{
    QTest::addColumn<int>("view");
    QTest::addColumn<QString>("state");        // of the node selected in the Sun and Alerts views
    QTest::addColumn<QList<bool>>("expected"); // reload, cancel, zoom, save, reveal, schedule
    using On = QList<bool>;
    const On none{false, false, false, false, false, false};
    QTest::newRow("Sun, data") << 0 << "data" << On{true, false, true, true, true, true};
    QTest::newRow("Sun, no data") << 0 << "missing" << On{true, false, false, false, false, true};
    QTest::newRow("Sun, queued") << 0 << "queued" << On{true, true, true, true, true, true};
    QTest::newRow("Sun, cache emptied")
        << 0 << "emptied" << On{true, false, false, false, false, true};
    QTest::newRow("Graphs, nothing selected") << 1 << "data" << none;
    QTest::newRow("Alerts, data") << 4 << "data" << On{true, false, false, false, true, true};
    QTest::newRow("Alerts, queued") << 4 << "queued" << On{true, true, false, false, true, true};
    QTest::newRow("Alerts, cache emptied")
        << 4 << "emptied" << On{true, false, false, false, false, true};
    QTest::newRow("Moon") << 5 << "data" << none;
}

void TestShell::menuEnabling()
{
    QFETCH(int, view);
    QFETCH(QString, state);
    QFETCH(QList<bool>, expected);
    TestHttpServer server;
    server.stall("/stall");
    const QString definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    const auto entry = [&server](const QString &dest) {
        return TestEnvironment::nodeDict(dest, dest, server.baseUrl(), QStringLiteral("stall"));
    };
    QVERIFY(TestEnvironment::writePropertyList(
        definitions + QStringLiteral("/DataSun.plist"),
        {{"Domain0", QVariantMap{{"DomainName", "Disc"}, {"Node0", entry("sun.png")}}}}));
    QVERIFY(TestEnvironment::writePropertyList(definitions + QStringLiteral("/DataAlerts.plist"),
                                               {{"Node0", entry("RSGA.txt")}}));
    ResourceLocator::setDefinitionsFolder(definitions);
    QSettings().setValue(QStringLiteral("isOnline"), 0); // nothing is fetched unasked
    start();
    Node *sun = _controller->core()->sunGroup()->allNodes().first();
    Node *report = _controller->core()->alertsGroup()->nodeAt(0);
    for (Node *node : {sun, report}) {
        node->removeDataFile(); // from an earlier row
        QFile file(node->filePath());
        QVERIFY(state == QLatin1String("missing") || file.open(QIODevice::WriteOnly));
    }
    _controller->sunView()->outlineShouldSelectItem(sun);
    _controller->alertsView()->selectNodeFromList();
    _controller->setGroupView(view);
    // The menus follow the queue and the cache by themselves.
    if (state == QLatin1String("queued")) {
        _controller->core()->sunGroup()->addNodeToDownloadQueue(sun);
        _controller->core()->alertsGroup()->addNodeToDownloadQueue(report);
    } else if (state == QLatin1String("emptied")) {
        _controller->core()->emptyGroupCaches();
    }
    const QList<QAction *> items{_controller->reloadItem(),  _controller->cancelDownloadItem(),
                                 _controller->menuItem(766), _controller->menuItem(767),
                                 _controller->revealItem(),  _controller->scheduleItem()};
    QList<bool> enabled;
    for (QAction *item : items)
        enabled << item->isEnabled();
    QCOMPARE(enabled, expected);
    if (GroupView *shown = _controller->selectedGroupView()) // its buttons agree
        QCOMPARE((QList<bool>{shown->zoomImageButton()->isEnabled(),
                              shown->revealImageButton()->isEnabled()}),
                 (QList<bool>{expected[2], expected[4]}));
    _controller->cancelAllDownloads();
}

void TestShell::preferencesPanel()
{
    QSettings().setValue(QStringLiteral("timeoutSeconds"), 42.9);
    start();
    PreferencesPanel *panel = _controller->preferencesPanel();
    QCOMPARE(panel->timeoutValueField()->value(), 42); // truncated toward zero
    Preferences::shared().setBeepOnErrors(true);
    _controller->openPreferencesPanel();
    QVERIFY(panel->isVisible());
    QVERIFY(panel->beepOnErrorsButton()->isChecked());
    QVERIFY(!panel->logErrorsOnlyButton()->isChecked());
    QVERIFY(panel->downloadMissingDataButton()->isChecked());
    QVERIFY(!panel->southernHemisphereButton()->isChecked());

    panel->logErrorsOnlyButton()->click();
    QVERIFY(Preferences::shared().logErrorsOnly());
    panel->downloadMissingDataButton()->click();
    QVERIFY(!Preferences::shared().downloadMissingData());
    panel->beepOnErrorsButton()->click();
    QVERIFY(!Preferences::shared().beepOnErrors());
    panel->southernHemisphereButton()->click();
    QVERIFY(Preferences::shared().southernHemisphere());
    QVERIFY(_controller->moonView()->southernHemisphere()); // told at once
    panel->timeoutValueField()->setValue(30);
    QCOMPARE(Preferences::shared().timeoutSeconds(), 30.0f);
    panel->timeoutValueField()->setValue(0); // no limits of its own
    QCOMPARE(Preferences::shared().timeoutSeconds(), 0.0f);
    // Nothing is stored before the application quits.
    QCOMPARE(QSettings().value(QStringLiteral("logErrorsOnly")), QVariant());
}

void TestShell::scheduleSheet()
{
    start();
    Node *node = _controller->core()->sunGroup()->allNodes().first();
    NodeScheduler *sheet = _controller->nodeScheduler();
    GroupView *sun = _controller->sunView();

    sun->openScheduleWindowForNode(); // nothing selected: nothing happens
    QVERIFY(!sheet->isVisible());

    node->setAutoUpdateRate(5);
    Preferences::shared().setOnline(false);
    sun->outlineShouldSelectItem(node);
    sun->openScheduleWindowForNode();
    QVERIFY(sheet->isVisible());
    QCOMPARE(sheet->windowModality(), Qt::WindowModal);
    QCOMPARE(sheet->nodeTitleField()->text(),
             QStringLiteral("Scheduled Updating for \"%1\"").arg(node->nodeTitle()));
    QVERIFY(!sheet->autoUpdatesButton()->isChecked());
    QVERIFY(!sheet->autoUpdateTimeMenu()->isEnabled()); // disabled, still showing the rate
    QCOMPARE(sheet->autoUpdateTimeMenu()->currentIndex(), 5);
    QCOMPARE(sheet->autoUpdateTimeMenu()->count(), 8);
    for (int i = 0; i < 8; ++i)
        QCOMPARE(sheet->autoUpdateTimeMenu()->itemData(i).toInt(), i);

    sheet->autoUpdatesButton()->click();
    QVERIFY(sheet->autoUpdateTimeMenu()->isEnabled());
    QCOMPARE(QSettings().value(Node::autoUpdateKey(node->fileName())).toInt(), 1);
    QVERIFY(sun->lastUpdatedField()->text().contains(QStringLiteral("Next Update")));
    sheet->setAutoUpdateTimer(3);
    QCOMPARE(QSettings().value(Node::autoUpdateRateKey(node->fileName())).toInt(), 3);
    QCOMPARE(node->nextUpdateInMinutes(), 60);
    sheet->downloadAtStartupButton()->click();
    QCOMPARE(QSettings().value(Node::downloadAtStartupKey(node->fileName())).toInt(), 1);
    sheet->close();
    QVERIFY(!sheet->isVisible());
}

void TestShell::scheduleSheetOutOfRangeRate()
{
    QSettings().setValue(QStringLiteral("autoUpdateRateNodeRSGA.txt"), 12);
    FlatGroup group;
    NodeScheduler sheet;
    Node *node = group.addNewNodeWithDict(TestEnvironment::nodeDict(QStringLiteral("RSGA.txt")));
    sheet.setMyNode(node);
    QCOMPARE(sheet.autoUpdateTimeMenu()->currentIndex(), -1); // nothing until the user picks
    QCOMPARE(node->nextUpdateInMinutes(), 5);
}

void TestShell::linkField_data()
{
    QTest::addColumn<bool>("orange");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<QPoint>>("path"); // press, moves..., release (relative to 60 x 20)
    QTest::addColumn<int>("clicks");
    const QPoint in(10, 10);
    const QPoint out(200, 10);
    QTest::newRow("press and release inside")
        << false << "https://example.org" << QList<QPoint>{in, in} << 1;
    QTest::newRow("dragged out, released outside")
        << false << "https://example.org" << QList<QPoint>{in, out, out} << 0;
    QTest::newRow("out and back in")
        << false << "https://example.org" << QList<QPoint>{in, out, in, in} << 1;
    QTest::newRow("blue with no text ignores it") << false << "" << QList<QPoint>{in, in} << 0;
    QTest::newRow("orange with no text still clicks") << true << "" << QList<QPoint>{in, in} << 1;
}

void TestShell::linkField()
{
    QFETCH(bool, orange);
    QFETCH(QString, text);
    QFETCH(QList<QPoint>, path);
    QFETCH(int, clicks);
    std::unique_ptr<ClickableText> field;
    if (orange)
        field = std::make_unique<ClickableTextOrange>();
    else
        field = std::make_unique<ClickableTextBlue>();
    field->setText(text);
    field->resize(60, 20);
    field->show();
    QSignalSpy spy(field.get(), &ClickableText::clicked);

    QTest::mousePress(field.get(), Qt::LeftButton, {}, path.first());
    if (orange || !text.isEmpty()) {
        QVERIFY(field->beingClicked());
        QCOMPARE(field->textColour(), field->highlightColour()); // highlighted while pressed
    } else {
        QVERIFY(!field->beingClicked());
        QCOMPARE(field->textColour(), field->restingColour());
    }
    for (qsizetype i = 1; i + 1 < path.size(); ++i)
        QTest::mouseMove(field.get(), path[i]);
    QTest::mouseRelease(field.get(), Qt::LeftButton, {}, path.last());

    QCOMPARE(spy.count(), clicks);
    QCOMPARE(field->beenClicked(), clicks > 0);
    QVERIFY(!field->beingClicked());
    QCOMPARE(field->textColour(), field->restingColour()); // black again at the end
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
    field->setText(QStringLiteral("https://example.org"));
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

void TestShell::backgroundClickTakesFocus()
{
    start();
    _controller->setGroupView(0);
    MainWindow *window = _controller->window();
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    window->activateWindow();
    QTreeView *outline = _controller->sunView()->domainsList();
    outline->setFocus(Qt::OtherFocusReason);
    QTRY_COMPARE(QApplication::focusWidget(), outline);

    // A click that no control takes reaches the window: the control that had the focus loses it.
    QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(window->width() / 2, 2));
    QCOMPARE(QApplication::focusWidget(), window->centralWidget());
}

VANTOREL_TEST_MAIN(TestShell)
#include "test_shell.moc"
