#include "../UiFixture.h"
#include "TestHttpServer.h"
#include "UrlCatcher.h"

#include "ui/common/FailureLine.h"
#include "ui/common/NamedImage.h"
#include "ui/log/ActivityLog.h"
#include "ui/sources/ImageCanvas.h"
#include "ui/sources/ImagePane.h"
#include "ui/sources/ImageWindow.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QSplitter>
#include <QTextBrowser>
#include <QThreadPool>
#include <QTreeView>

// The Sun view on screen, as the user meets it: what it restores, what each selection shows and
// offers, the failure line, the file commands and the floating image windows.
class TestGroupView : public QObject {
    Q_OBJECT

    std::unique_ptr<GroupView> load()
    {
        auto view = std::make_unique<GroupView>(_group.get(), &_log);
        view->setDefaultDescription("<p>default page</p>");
        view->awakeFromNib();
        view->resize(1000, 700);
        view->show();
        view->loadDomainDataForGroup("Sun", 0, "DataSun.plist", _data);
        view->applicationDidFinishLaunching();
        return view;
    }
    QString path(const QString &name) const { return QDir(_data).filePath(name); }
    Node *node(const QString &name) const
    {
        const QList<Node *> all = _group->allNodes();
        return *std::find_if(all.begin(), all.end(),
                             [&](Node *n) { return n->itemName() == name; });
    }
    // Clicks, or double-clicks, the outline row that says `name`; "-" clears the selection.
    static void click(GroupView *view, const QString &name, bool twice = false)
    {
        auto *tree = view->findChild<QTreeView *>();
        if (name == QLatin1String("-"))
            return tree->clearSelection();
        const QModelIndexList found = tree->model()->match(
            tree->model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchRecursive);
        const QPoint centre = tree->visualRect(found.value(0)).center();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, centre);
        if (twice) // the second press of a double click
            QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, centre);
    }
    // What the image pane shows: a placeholder of the Sun by its name, or the picture's size.
    static QString shown(const GroupView *view)
    {
        const QPixmap shown = view->findChild<ImagePane *>()->pixmap();
        for (const QString name : {"SplashSolar", "DataNotLoadedSolar", "DownloadingDataSolar"}) {
            if (!shown.isNull() &&
                shown.cacheKey() == NamedImage::pixmap(name, view->devicePixelRatioF()).cacheKey())
                return name;
        }
        const QSize size = shown.deviceIndependentSize().toSize();
        return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<DomainGroup> _group;
    ActivityLog _log;
    QString _data;

private slots:
    void init()
    {
        TestEnvironment::resetState();
        _server = std::make_unique<TestHttpServer>();
        _server->stall("/stall");
        _data = TestEnvironment::makeFolder("data");
        const auto entry = [this](const QString &dest, const QString &key = {},
                                  const QString &value = {}) {
            QVariantMap dict = TestEnvironment::nodeDict(dest, dest, _server->baseUrl(), "stall");
            dict.insert("DataSource", "https://example.org/" + dest);
            if (!key.isEmpty())
                dict.insert(key, value);
            return dict;
        };
        // b.png has a description of one character; d.png an address that cannot be fetched.
        const QString a = "<p>About <b>a</b> &Aring; Å 𝔄</p>";
        TestEnvironment::installDefinitions(
            "DataSun.plist",
            {{"Domain0", QVariantMap{{"DomainName", "Never"},
                                     {"Node0", entry("a.png", "Description", a)},
                                     {"Node1", entry("b.png", "Description", "x")}}},
             {"Domain1", QVariantMap{{"DomainName", "Opened"}, {"Node0", entry("c.txt")}}},
             {"Domain2", QVariantMap{{"DomainName", "Closed"},
                                     {"Node0", entry("d.png", "URL", "ftp://127.0.0.1/")}}}});
        _group = std::make_unique<DomainGroup>();
    }
    void cleanup()
    {
        _group.reset();
        _server.reset();
    }

    void restoresItsLayout()
    {
        QSettings().setValue("Opened Expanded", 1);
        QSettings().setValue("Closed Expanded", 2);
        {
            auto view = load();
            view->findChild<QSplitter *>(QString(), Qt::FindDirectChildrenOnly)->setSizes({800, 0});
            view->saveFrameSize();
        }
        _group = std::make_unique<DomainGroup>();
        auto view = load();
        // The collapsed detail pane comes back collapsed; the domains as they were left.
        auto *splitter = view->findChild<QSplitter *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(splitter->sizes().value(1), 0);
        auto *tree = view->findChild<QTreeView *>();
        const auto expanded = [tree](int row) {
            return tree->isExpanded(tree->model()->index(row, 0));
        };
        QCOMPARE((QList<bool>{expanded(0), expanded(1), expanded(2)}),
                 (QList<bool>{true, true, false}));
        QVERIFY(!QSettings().contains("Never Expanded")); // restoring is not the user's doing
        // A double click on a domain opens or closes it, and that is remembered.
        click(view.get(), "Closed", true);
        click(view.get(), "Opened", true);
        QCOMPARE((QList<bool>{expanded(1), expanded(2)}), (QList<bool>{false, true}));
        QCOMPARE(QSettings().value("Opened Expanded").toInt(), 2);
        QCOMPARE(QSettings().value("Closed Expanded").toInt(), 1);
    }

    void selection_data()
    {
        // The clicks, then what the view shows. Whether missing data is fetched at all is the
        // queue's rule; the view shows what came of it. c.txt downloads, stalled, ahead of a.png.
        // clicks: outline rows, "-" clears the selection; file: of a.png, "image", other bytes
        // or none; setUp: "offline", or "queued" (a.png); buttons: Cancel, Reload, Zoom,
        // Show File, Schedule…, Reload Group.
        columns<QString, QByteArray, QString, QString, QString>("clicks", "file", "setUp",
                                                                "picture", "buttons");
        const auto row = [](const char *name, const char *clicks, const QByteArray &file,
                            const char *setUp, const char *picture, const char *buttons) {
            QTest::newRow(name) << QString(clicks) << file << QString(setUp) << QString(picture)
                                << QString(buttons);
        };
        row("at start", "", "", "", "SplashSolar", "000000");
        row("a domain", "a.png Opened", "", "", "SplashSolar", "000001");
        row("selection lost", "a.png -", "", "", "SplashSolar", "000000");
        row("data, scaled", "a.png", "image", "", "800x600", "011110");
        row("data, a download queued", "a.png", "image", "queued", "800x600", "111110");
        row("not an image", "a.png", "junk", "", "DataNotLoadedSolar", "011110");
        row("missing, fetched", "a.png", "", "", "DownloadingDataSolar", "110010");
        row("missing, not fetched", "a.png", "", "offline", "DataNotLoadedSolar", "010010");
        row("another node", "a.png b.png", "", "offline", "DataNotLoadedSolar", "010010");
        // a.png's picture is still being decoded when b.png is chosen: it must not show up later.
        row("another, mid-decode", "a.png b.png", "image", "offline", "DataNotLoadedSolar",
            "010010");
    }
    void selection()
    {
        const QByteArray file = fetch<QByteArray>("file");
        const QString buttons = fetch<QString>("buttons");
        if (file == "image")
            writeImage(path("a.png"), QSize(1600, 1200));
        else if (!file.isEmpty())
            QVERIFY(TestEnvironment::writeFile(path("a.png"), file));
        Preferences::shared().setOnline(fetch<QString>("setUp") != "offline");
        auto view = load();
        _group->addNodeToDownloadQueue(node("c.txt"));
        if (fetch<QString>("setUp") == "queued")
            _group->addNodeToDownloadQueue(node("a.png"));
        const QStringList clicked = fetch<QString>("clicks").split(' ', Qt::SkipEmptyParts);
        for (const QString &name : clicked)
            click(view.get(), name);
        QThreadPool::globalInstance()->waitForDone(); // large pictures decode in the background
        QTRY_COMPARE(shown(view.get()), fetch<QString>("picture"));
        QCOMPARE(enabledButtons(view.get(), {"Cancel", "Reload", "Zoom", "Show File", "Schedule…",
                                             "Reload Group"}),
                 buttons);
        const QString item = buttons[4] == '1' ? clicked.last() : QString(); // the node shown
        QCOMPARE(labelStartingWith(view.get(), item.isEmpty() ? "Please" : item),
                 item.isEmpty() ? "Please select an item from the list." : item + " title");
        QCOMPARE(labelStartingWith(view.get(), "https:"),
                 item.isEmpty() ? "" : "https://example.org/" + item);
        QCOMPARE(labelStartingWith(view.get(), "Last Updated"),
                 item.isEmpty() ? "" : "Last Updated: Unknown");
        // Read as ASCII, lossy, then as HTML: entities survive, other characters do not. A
        // description of one character is none.
        QCOMPARE(view->findChild<QTextBrowser *>()->toPlainText(),
                 item == "a.png" ? "About a Å ? ?" : "default page");
        _group->cancelAllDownloads();
    }

    void failedDownloadSaysWhy_data()
    {
        columns<QString, bool>("name", "hasData");
        QTest::newRow("no data: the not-loaded picture") << "a.png" << false;
        QTest::newRow("the last good picture stays") << "a.png" << true;
        QTest::newRow("an address that fails at once") << "d.png" << false;
    }
    void failedDownloadSaysWhy()
    {
        const bool hasData = fetch<bool>("hasData");
        _server->setFailEvery(1);
        if (hasData)
            writeImage(path(fetch<QString>("name")), QSize(40, 30));
        auto view = load();
        QSignalSpy failed(_group.get(), &NodeGroup::nodeDownloadFailed);
        click(view.get(), fetch<QString>("name")); // online: missing data is fetched at once
        if (hasData)
            button(view.get(), "Reload")->click();
        QTRY_COMPARE(failed.count(), 1);
        // The words of the log, without its time stamp.
        QCOMPARE(view->findChild<FailureLine *>()->text(), failed.first().at(1).toString());
        QCOMPARE(shown(view.get()), hasData ? "40x30" : "DataNotLoadedSolar");
        QTest::qWait(100); // showing the failure does not try again
        QCOMPARE(failed.count(), 1);
    }

    void fileCommands()
    {
        // Offered for any downloaded node: Zoom opens a window for a picture that reads, Show File
        // the folder of any picture (the test session has no file manager on its bus).
        writeImage(path("a.png"), QSize(20, 20));
        QVERIFY(TestEnvironment::writeFile(path("b.png"), "junk"));
        QVERIFY(TestEnvironment::writeFile(path("c.txt"), "report"));
        auto view = load();
        UrlCatcher catcher;
        QDesktopServices::setUrlHandler("file", &catcher, "open");
        QTest::ignoreMessage(QtWarningMsg, "ImageController (b.png): image == nil");
        for (const char *name : {"a.png", "b.png", "c.txt"}) {
            click(view.get(), name);
            QCOMPARE(enabledButtons(view.get(), {"Zoom", "Show File"}), "11");
            button(view.get(), "Zoom")->click();
            button(view.get(), "Show File")->click();
        }
        QDesktopServices::unsetUrlHandler("file");
        QCOMPARE(topLevels<ImageWindow>().size(), 1);
        QCOMPARE(catcher.opened, QList<QUrl>(2, QUrl::fromLocalFile(_data)));
    }

    void saveCopy_data()
    {
        // situation: "self" saves onto the data file itself; "unreadable" and "gone" take the
        // data file away. copied: else the file at the chosen path is as it was.
        columns<int, QString, bool, bool>("result", "situation", "copied", "alert");
        const int ok = QDialog::Accepted;
        QTest::newRow("OK replaces a file") << ok << "" << true << false;
        QTest::newRow("Cancel") << int(QDialog::Rejected) << "" << false << false;
        QTest::newRow("onto the data file itself") << ok << "self" << true << false;
        QTest::newRow("failed copy keeps the old file") << ok << "unreadable" << false << true;
        QTest::newRow("data gone meanwhile") << ok << "gone" << false << true;
    }
    void saveCopy()
    {
        const QString situation = fetch<QString>("situation");
        const bool copied = fetch<bool>("copied");
        const QString data = path("a.png");
        writeImage(data, QSize(20, 20));
        auto view = load();
        click(view.get(), "a.png");
        view->saveNodeImage();
        auto *panel = view->findChild<QFileDialog *>();
        // It proposes the data file's name in the home folder.
        QCOMPARE(panel->selectedFiles(), QStringList{QDir::home().filePath("a.png")});
        const QString target =
            situation == "self" ? data : TestEnvironment::makeFolder("copies") + "/a.png";
        if (target != data)
            QVERIFY(TestEnvironment::writeFile(target, "old"));
        if (situation == "unreadable" || situation == "gone")
            QFile::remove(data);
        if (situation == "unreadable")
            QVERIFY(QDir().mkdir(data)); // there, but no file to read
        panel->selectFile(target);
        static_cast<QDialog *>(panel)->done(fetch<int>("result")); // the user's choice
        // The copy runs in the background: a failure shows when it has ended.
        QTRY_COMPARE(view->findChild<QMessageBox *>() != nullptr, fetch<bool>("alert"));
        QTRY_COMPARE(QImage(target).size() == QSize(20, 20), copied);
        QCOMPARE(TestEnvironment::readFile(target) != "old", copied);
    }

    void imageWindow()
    {
        writeImage(path("a.png"), QSize(400, 300)); // room for the largest size on the screen
        auto view = load();
        click(view.get(), "a.png");
        button(view.get(), "Zoom")->click();
        ImageWindow *window = topLevels<ImageWindow>().value(0);
        QVERIFY(window && window->isVisible());
        QCOMPARE(window->windowTitle(), "a.png");
        QCOMPARE((QList<QSize>{window->size(), window->minimumSize(), window->maximumSize()}),
                 (QList<QSize>{{400, 300}, {100, 75}, {600, 450}}));

        // Closed, it is hidden; a finished download refreshes it without showing it, also when
        // another node is selected; Zoom shows the same window where it was.
        window->move(33, 44);
        window->close();
        Preferences::shared().setOnline(false);
        click(view.get(), "b.png");
        writeImage(path("a.png"), QSize(100, 80));
        emit _group->nodeDataLoaded(node("a.png"));
        QCOMPARE(window->imageView()->pixmap().deviceIndependentSize(), QSizeF(100, 80));
        QVERIFY(!window->isVisible());
        click(view.get(), "a.png");
        button(view.get(), "Zoom")->click();
        QCOMPARE(topLevels<ImageWindow>(), QList<ImageWindow *>{window});
        QVERIFY(window->isVisible() && window->pos() == QPoint(33, 44));
        view->cleanup(); // at quit the windows end
        QVERIFY(topLevels<ImageWindow>().isEmpty());
    }
};

VANTOREL_TEST_MAIN(TestGroupView)
#include "test_groupview.moc"
