#include "TestEnvironment.h"
#include "TestHttpServer.h"
#include "UrlCatcher.h"

#include "core/settings/Preferences.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/util/DescriptionText.h"
#include "core/util/ImageScaling.h"
#include "core/util/ResourceLocator.h"
#include "ui/common/FailureLine.h"
#include "ui/log/ActivityLog.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/ImageCanvas.h"
#include "ui/sources/ImageController.h"
#include "ui/sources/ImageWindow.h"
#include "ui/sources/ScaledImage.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QTextBrowser>
#include <QThreadPool>
#include <QTreeView>
#include <QtTest>

// An image group on screen: what it restores at loading, the selection and what each state
// shows, the image rule, the file commands and the floating image windows.
class TestGroupView : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void expansionRestored();
    void userExpansionRemembered();
    void layoutRoundTrip();
    void collapsedPaneComesBackCollapsed();
    void missingFileLeavesTheSplash();

    void scalingRule_data();
    void scalingRule();
    void decodedAtDisplaySize();
    void lossyAscii();

    void nothingSelected();
    void domainSelected();
    void nodeControls_data();
    void nodeControls();
    void imageTable_data();
    void imageTable();
    void staleLargePictureIsDropped();
    void reselectingOnlyRefreshesControls();
    void losingTheSelection();
    void descriptions();
    void nodeEventsRefresh();
    void failedDownloadSaysWhy_data();
    void failedDownloadSaysWhy();
    void doubleClick();
    void fileCommandsOnlyForImages();
    void saveCopy_data();
    void saveCopy();
    void revealFallsBackToTheFolder();

    void oneWindowPerNode();
    void zoomArithmetic();
    void defaultSizeAndCentre();
    void hiddenWindowRefreshedStaysHidden();
    void unreadableImageGivesNoWindow();

private:
    std::unique_ptr<GroupView> load()
    {
        auto view = std::make_unique<GroupView>(_group.get(), &_log);
        view->setDefaultDescription(QStringLiteral("<p>default page</p>"));
        view->awakeFromNib();
        view->resize(1000, 700);
        view->show();
        view->loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                     _data);
        view->applicationDidFinishLaunching();
        return view;
    }
    Node *node(int domain, int row) const
    {
        return _group->domains().at(domain)->childAtIndex(row);
    }
    QModelIndex indexOf(GroupView *view, OutlineItem *item) const
    {
        return item->isNode() ? view->outlineModel()->indexForNode(static_cast<Node *>(item))
                              : view->outlineModel()->indexForDomain(static_cast<Domain *>(item));
    }
    // Selects the way a user does, with a click on the row.
    void click(GroupView *view, OutlineItem *item)
    {
        QTreeView *tree = view->domainsList();
        const QRect rect = tree->visualRect(indexOf(view, item));
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, rect.center());
    }
    void writeImage(const QString &name, const QSize &size)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkYellow);
        QVERIFY(image.save(QDir(_data).filePath(name), "PNG"));
    }
    QList<bool> buttons(GroupView *view) const
    {
        return {
            view->cancelDownloadButton()->isEnabled(), view->refreshImageButton()->isEnabled(),
            view->zoomImageButton()->isEnabled(),      view->revealImageButton()->isEnabled(),
            view->scheduleNodeButton()->isEnabled(),   view->refreshDomainButton()->isEnabled()};
    }

    std::unique_ptr<TestHttpServer> _server;
    std::unique_ptr<DomainGroup> _group;
    ActivityLog _log;
    QString _data;
};

void TestGroupView::init()
{
    TestEnvironment::resetState();
    _server = std::make_unique<TestHttpServer>();
    _server->stall("/stall");
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    const QString folder = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    const auto nodeDict = [this](const QString &dest, const QVariantMap &extra = {}) {
        QVariantMap dict =
            TestEnvironment::nodeDict(dest, dest, _server->baseUrl(), QStringLiteral("stall"));
        dict.insert(QStringLiteral("DataSource"), QStringLiteral("https://example.org/") + dest);
        for (auto it = extra.cbegin(); it != extra.cend(); ++it)
            dict.insert(it.key(), it.value());
        return dict;
    };
    QVERIFY(TestEnvironment::writePropertyList(
        folder + QStringLiteral("/DataSun.plist"),
        {{"Domain0",
          QVariantMap{{"DomainName", "Never"},
                      {"Node0", nodeDict("a.png", {{"Description", "<p>About <b>a</b></p>"}})},
                      {"Node1", nodeDict("b.png", {{"Description", "x"}})}}},
         {"Domain1",
          QVariantMap{{"DomainName", "Opened"}, {"Node0", nodeDict("c.txt", {{"FileType", 1}})}}},
         {"Domain2", QVariantMap{{"DomainName", "Closed"},
                                 {"Node0", nodeDict("d.png", {{"URL", "ftp://127.0.0.1/"}})}}}}));
    ResourceLocator::setDefinitionsFolder(folder);
    _group = std::make_unique<DomainGroup>();
}

void TestGroupView::cleanup()
{
    _group.reset();
    _server.reset();
}

// --- Loading and layout -----------------------------------------------------------------------

void TestGroupView::expansionRestored()
{
    QSettings settings;
    settings.setValue(QStringLiteral("Opened Expanded"), 1);
    settings.setValue(QStringLiteral("Closed Expanded"), 2);
    auto view = load();
    QTreeView *tree = view->domainsList();
    QVERIFY(tree->isExpanded(view->outlineModel()->index(0, 0)));
    QVERIFY(tree->isExpanded(view->outlineModel()->index(1, 0)));
    QVERIFY(!tree->isExpanded(view->outlineModel()->index(2, 0)));
    // Restoring is not the user's doing and writes nothing.
    QVERIFY(!settings.contains(QStringLiteral("Never Expanded")));
}

void TestGroupView::userExpansionRemembered()
{
    auto view = load();
    view->domainsList()->collapse(view->outlineModel()->index(0, 0));
    QCOMPARE(QSettings().value(QStringLiteral("Never Expanded")).toInt(), 2);
    view->domainsList()->expand(view->outlineModel()->index(0, 0));
    QCOMPARE(QSettings().value(QStringLiteral("Never Expanded")).toInt(), 1);
}

void TestGroupView::layoutRoundTrip()
{
    {
        auto view = load();
        view->splitView()->setSizes({300, 500});
        view->saveFrameSize();
    }
    QSettings settings;
    QVERIFY(settings.value(QStringLiteral("SunViewSize")).toString().startsWith(QLatin1Char('{')));
    QCOMPARE(settings.value(QStringLiteral("SunViewSplitViewRects")).toStringList().size(), 2);
    _group = std::make_unique<DomainGroup>();
    auto again = load();
    QCOMPARE(again->splitView()->sizes().first(), 300);
}

void TestGroupView::collapsedPaneComesBackCollapsed()
{
    {
        auto view = load();
        view->splitView()->setSizes({800, 0});
        view->saveFrameSize();
    }
    QCOMPARE(QSettings().value(QStringLiteral("SunViewSplitViewRects")).toStringList().value(1),
             QStringLiteral("{{0, 0}, {0, 0}}"));
    _group = std::make_unique<DomainGroup>();
    auto again = load();
    QCOMPARE(again->splitView()->sizes().value(1), 0);
}

void TestGroupView::missingFileLeavesTheSplash()
{
    ResourceLocator::setDefinitionsFolder(TestEnvironment::makeFolder(QStringLiteral("empty")));
    ResourceLocator::setResourceFolder(TestEnvironment::makeFolder(QStringLiteral("noresources")));
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^Failed to load rootDict!")));
    auto view = load();
    ResourceLocator::setResourceFolder(QStringLiteral(VANTOREL_TEST_RESOURCE_DIR));
    QCOMPARE(view->outlineModel()->rowCount(), 0);
    QVERIFY(!view->splashImage().isNull());
    QCOMPARE(view->shownImage().cacheKey(), view->splashImage().cacheKey());
}

// --- The image rule ---------------------------------------------------------------------------

void TestGroupView::scalingRule_data()
{
    QTest::addColumn<QSize>("pixels");
    QTest::addColumn<QSize>("points");
    QTest::newRow("1600 x 1200") << QSize(1600, 1200) << QSize(800, 600);
    QTest::newRow("900 x 1200") << QSize(900, 1200) << QSize(600, 800);
    QTest::newRow("1000 x 1000, a tie") << QSize(1000, 1000) << QSize(800, 800);
    QTest::newRow("801 x 10") << QSize(801, 10) << QSize(800, 9);
    QTest::newRow("2000 x 1001") << QSize(2000, 1001) << QSize(800, 400);
    QTest::newRow("640 x 480 is never enlarged") << QSize(640, 480) << QSize(640, 480);
    QTest::newRow("800 x 800 stays") << QSize(800, 800) << QSize(800, 800);
    QTest::newRow("4096 x 4096") << QSize(4096, 4096) << QSize(800, 800);
    QTest::newRow("10 x 5000") << QSize(10, 5000) << QSize(1, 800);
}

void TestGroupView::scalingRule()
{
    QFETCH(QSize, pixels);
    QFETCH(QSize, points);
    QCOMPARE(ImageScaling::scaledSize(pixels), points);
}

void TestGroupView::decodedAtDisplaySize()
{
    writeImage(QStringLiteral("big.png"), QSize(1600, 1200));
    const QString path = QDir(_data).filePath(QStringLiteral("big.png"));
    const QPixmap normal = ScaledImage::fromFile(path, 1.0);
    QCOMPARE(normal.size(), QSize(800, 600)); // decoded small, not scaled afterwards
    QCOMPARE(normal.deviceIndependentSize().toSize(), QSize(800, 600));
    const QPixmap dense = ScaledImage::fromFile(path, 2.0);
    QCOMPARE(dense.size(), QSize(1600, 1200)); // a dense screen gets the pixels the file has
    QCOMPARE(dense.deviceIndependentSize().toSize(), QSize(800, 600));
    QVERIFY(ScaledImage::fromFile(QDir(_data).filePath(QStringLiteral("none.png"))).isNull());
}

void TestGroupView::lossyAscii()
{
    QCOMPARE(DescriptionText::lossyAscii(QStringLiteral("SDO &Aring; 193 Å ☉ 𝔄")),
             QStringLiteral("SDO &Aring; 193 ? ? ?"));
}

// --- Selection and what it shows -------------------------------------------------------------

void TestGroupView::nothingSelected()
{
    auto view = load();
    QVERIFY(!view->hasSelectedNode());
    QCOMPARE(view->nodeTitleField()->text(),
             QStringLiteral("Please select an item from the list."));
    QCOMPARE(view->dataSourceField()->text(), QString());
    QCOMPARE(view->lastUpdatedField()->text(), QString());
    QCOMPARE(buttons(view.get()), QList<bool>({false, false, false, false, false, false}));
    QCOMPARE(view->shownImage().cacheKey(), view->splashImage().cacheKey());
    QVERIFY(view->descriptionView()->toPlainText().contains(QStringLiteral("default page")));
}

void TestGroupView::domainSelected()
{
    auto view = load();
    click(view.get(), node(0, 0));
    click(view.get(), _group->domains().at(1));
    QCOMPARE(view->selectedDomain(), _group->domains().at(1));
    QVERIFY(!view->hasSelectedNode());
    QCOMPARE(view->shownImage().cacheKey(), view->splashImage().cacheKey());
    QCOMPARE(view->nodeTitleField()->text(),
             QStringLiteral("Please select an item from the list."));
    QVERIFY(view->descriptionView()->toPlainText().contains(QStringLiteral("default page")));
    QCOMPARE(buttons(view.get()), QList<bool>({false, false, false, false, false, true}));
    QCOMPARE(QSettings().value(QStringLiteral("Sun LastNodeViewed")).toString(), QString());
}

void TestGroupView::nodeControls_data()
{
    QTest::addColumn<bool>("downloaded");
    QTest::addColumn<bool>("autoUpdates");
    QTest::addColumn<QList<bool>>("expected");
    QTest::addColumn<QString>("lastLine");
    // cancel, reload, zoom, reveal, schedule, reload group
    QTest::newRow("downloaded, manual")
        << true << false << QList<bool>{false, true, true, true, true, false}
        << "Last Updated: Unknown";
    QTest::newRow("downloaded, automatic")
        << true << true << QList<bool>{false, true, true, true, true, false}
        << "Last Updated: Unknown, Next Update: ";
    QTest::newRow("missing, queued at once")
        << false << false << QList<bool>{true, true, false, false, true, false}
        << "Last Updated: Unknown";
}

void TestGroupView::nodeControls()
{
    QFETCH(bool, downloaded);
    QFETCH(bool, autoUpdates);
    QFETCH(QList<bool>, expected);
    QFETCH(QString, lastLine);
    if (downloaded)
        writeImage(QStringLiteral("a.png"), QSize(40, 30));
    QSettings().setValue(QStringLiteral("autoUpdateNodea.png"), int(autoUpdates));
    auto view = load();
    click(view.get(), node(0, 0));
    QCOMPARE(view->selectedNode(), node(0, 0));
    QCOMPARE(buttons(view.get()), expected);
    QCOMPARE(view->nodeTitleField()->text(), QStringLiteral("a.png title"));
    QCOMPARE(view->dataSourceField()->text(), QStringLiteral("https://example.org/a.png"));
    QVERIFY2(view->lastUpdatedField()->text().startsWith(lastLine),
             qPrintable(view->lastUpdatedField()->text()));
    QCOMPARE(QSettings().value(QStringLiteral("Sun LastNodeViewed")).toString(),
             QStringLiteral("a.png"));
    _group->cancelAllDownloads();
}

void TestGroupView::imageTable_data()
{
    QTest::addColumn<QString>("file"); // what the data file holds: "image", "junk" or ""
    QTest::addColumn<bool>("queuedBefore");
    QTest::addColumn<bool>("online");
    QTest::addColumn<bool>("fetchMissing");
    QTest::addColumn<QString>("shown"); // "image", "downloading" or "noData"
    QTest::addColumn<bool>("queuedAfter");

    QTest::newRow("data there") << "image" << false << true << true << "image" << false;
    QTest::newRow("data there while queued") << "image" << true << true << true << "image" << true;
    QTest::newRow("not an image") << "junk" << false << true << true << "noData" << false;
    QTest::newRow("missing, already queued")
        << "" << true << false << false << "downloading" << true;
    QTest::newRow("missing, online, fetching")
        << "" << false << true << true << "downloading" << true;
    QTest::newRow("missing, offline") << "" << false << false << true << "noData" << false;
    QTest::newRow("missing, preference off") << "" << false << true << false << "noData" << false;
}

void TestGroupView::imageTable()
{
    QFETCH(QString, file);
    QFETCH(bool, queuedBefore);
    QFETCH(bool, online);
    QFETCH(bool, fetchMissing);
    QFETCH(QString, shown);
    QFETCH(bool, queuedAfter);

    if (file == QLatin1String("image"))
        writeImage(QStringLiteral("a.png"), QSize(1600, 1200));
    if (file == QLatin1String("junk")) {
        QFile junk(QDir(_data).filePath(QStringLiteral("a.png")));
        QVERIFY(junk.open(QIODevice::WriteOnly));
        junk.write("this is not a picture");
    }
    Preferences::shared().setOnline(online);
    Preferences::shared().setDownloadMissingData(fetchMissing);
    auto view = load();
    Node *a = node(0, 0);
    _group->addNodeToDownloadQueue(node(0, 1)); // something ahead, so a queued node waits
    if (queuedBefore)
        _group->addNodeToDownloadQueue(a);
    click(view.get(), a);

    if (shown == QLatin1String("image"))
        QTRY_COMPARE(view->shownImage().deviceIndependentSize().toSize(), QSize(800, 600));
    else if (shown == QLatin1String("downloading"))
        QCOMPARE(view->shownImage().cacheKey(), view->downloadingImage().cacheKey());
    else
        QCOMPARE(view->shownImage().cacheKey(), view->noDataImage().cacheKey());
    QCOMPARE(_group->nodeIsInDownloadQueue(a), queuedAfter);
    if (queuedAfter && !queuedBefore)
        QCOMPARE(view->outlineModel()->data(view->outlineModel()->indexForNode(a, 1)).toString(),
                 QStringLiteral("-"));
    _group->cancelAllDownloads();
}

void TestGroupView::staleLargePictureIsDropped()
{
    writeImage(QStringLiteral("a.png"), QSize(1600, 1200)); // decoded in the background
    Preferences::shared().setOnline(false);
    auto view = load();
    click(view.get(), node(0, 0));
    click(view.get(), node(0, 1)); // chosen before a.png's picture is ready
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(view->selectedNode(), node(0, 1));
    QCOMPARE(view->shownImage().cacheKey(), view->noDataImage().cacheKey());
}

void TestGroupView::reselectingOnlyRefreshesControls()
{
    writeImage(QStringLiteral("a.png"), QSize(50, 50));
    auto view = load();
    click(view.get(), node(0, 0));
    const qint64 shown = view->shownImage().cacheKey();
    writeImage(QStringLiteral("a.png"), QSize(60, 60)); // a new file on disk
    view->outlineShouldSelectItem(node(0, 0));
    QCOMPARE(view->shownImage().cacheKey(), shown); // not reloaded
}

void TestGroupView::losingTheSelection()
{
    auto view = load();
    Preferences::shared().setOnline(false);
    click(view.get(), node(0, 0));
    QVERIFY(view->hasSelectedNode());
    view->domainsList()->clearSelection();
    QVERIFY(!view->hasSelectedNode());
    QVERIFY(!view->selectedDomain());
    QCOMPARE(view->shownImage().cacheKey(), view->splashImage().cacheKey());
    QCOMPARE(view->nodeTitleField()->text(),
             QStringLiteral("Please select an item from the list."));
}

void TestGroupView::descriptions()
{
    Preferences::shared().setOnline(false);
    auto view = load();
    click(view.get(), node(0, 0));
    QCOMPARE(view->descriptionView()->toPlainText(), QStringLiteral("About a"));
    // A description of one character is no description: the default page shows.
    click(view.get(), node(0, 1));
    QVERIFY(view->descriptionView()->toPlainText().contains(QStringLiteral("default page")));
    click(view.get(), node(1, 0));
    QVERIFY(view->descriptionView()->toPlainText().contains(QStringLiteral("default page")));
}

void TestGroupView::nodeEventsRefresh()
{
    auto view = load();
    Node *b = node(0, 1);
    b->setStatusMessage(QStringLiteral("42%"), QStringLiteral("42% Complete..."));
    QCOMPARE(view->outlineModel()->data(view->outlineModel()->indexForNode(b, 1)).toString(),
             QStringLiteral("42%"));
    // Switching automatic updates on for the selected node rewrites its last-update line.
    Preferences::shared().setOnline(false);
    click(view.get(), b);
    QVERIFY(!view->lastUpdatedField()->text().contains(QStringLiteral("Next Update")));
    b->setAutoUpdates(true);
    QVERIFY(view->lastUpdatedField()->text().contains(QStringLiteral(", Next Update: ")));
}

void TestGroupView::failedDownloadSaysWhy_data()
{
    QTest::addColumn<int>("domain"); // 0: the server fails it; 2: an ftp address fails at once
    QTest::addColumn<bool>("hasData");
    QTest::newRow("no data: the not-loaded picture") << 0 << false;
    QTest::newRow("the last good picture stays") << 0 << true;
    QTest::newRow("failed at once") << 2 << false;
}

void TestGroupView::failedDownloadSaysWhy()
{
    QFETCH(int, domain);
    QFETCH(bool, hasData);
    _server->setFailEvery(1);
    if (hasData)
        writeImage(QStringLiteral("a.png"), QSize(40, 30));
    auto view = load();
    QSignalSpy failed(_group.get(), &NodeGroup::nodeDownloadFailed);
    click(view.get(), node(domain, 0)); // online: missing data is fetched at once
    if (hasData)
        view->refreshSelectedNodeData();
    QTRY_COMPARE(failed.count(), 1);
    // The words of the log, without its time stamp.
    QCOMPARE(view->failureField()->text(), failed.first().at(1).toString());
    QCOMPARE(view->shownImage().cacheKey() == view->noDataImage().cacheKey(), !hasData);
    QCOMPARE(view->shownImage().deviceIndependentSize().toSize() == QSize(40, 30), hasData);
    QTest::qWait(100); // showing the failure does not try again
    QCOMPARE(failed.count(), 1);
}

void TestGroupView::doubleClick()
{
    QSettings().setValue(QStringLiteral("Closed Expanded"), 2);
    Preferences::shared().setOnline(false);
    auto view = load();
    QTreeView *tree = view->domainsList();
    const QModelIndex closed = view->outlineModel()->index(2, 0);
    click(view.get(), _group->domains().at(2));
    view->domainListDoubleClicked();
    QVERIFY(tree->isExpanded(closed));
    view->domainListDoubleClicked();
    QVERIFY(!tree->isExpanded(closed));

    click(view.get(), node(0, 0)); // no data: nothing happens
    view->domainListDoubleClicked();
    QVERIFY(!view->imageWindowForNode(node(0, 0)));

    writeImage(QStringLiteral("a.png"), QSize(100, 80));
    view->domainListDoubleClicked();
    QVERIFY(view->imageWindowForNode(node(0, 0)));
}

void TestGroupView::fileCommandsOnlyForImages()
{
    QFile text(QDir(_data).filePath(QStringLiteral("c.txt")));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("report");
    text.close();
    auto view = load();
    click(view.get(), node(1, 0));
    // Enabled for any downloaded node, but acting only on images.
    QVERIFY(view->zoomImageButton()->isEnabled());
    view->zoomSelectedNodeData();
    QVERIFY(!view->imageWindowForNode(node(1, 0)));
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
    view->revealSelectedNodeData();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QVERIFY(catcher.opened.isEmpty());
}

void TestGroupView::saveCopy_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("situation");
    QTest::addColumn<bool>("copied"); // else the file at the chosen path is as it was
    QTest::addColumn<bool>("alert");
    const int ok = QDialog::Accepted;
    QTest::newRow("OK replaces a file") << ok << "" << true << false;
    QTest::newRow("Cancel") << int(QDialog::Rejected) << "" << false << false;
    QTest::newRow("onto the data file itself") << ok << "self" << true << false;
    QTest::newRow("failed copy keeps the old file") << ok << "unreadable" << false << true;
    QTest::newRow("data gone meanwhile") << ok << "gone" << false << true;
}

void TestGroupView::saveCopy()
{
    QFETCH(int, result);
    QFETCH(QString, situation);
    QFETCH(bool, copied);
    QFETCH(bool, alert);
    writeImage(QStringLiteral("a.png"), QSize(20, 20));
    auto view = load();
    click(view.get(), node(0, 0));

    // The panel proposes the data file's name in the home folder.
    view->saveNodeImage();
    auto *panel = view->window()->findChild<QFileDialog *>();
    QVERIFY(panel);
    QCOMPARE(panel->windowModality(), Qt::WindowModal);
    QCOMPARE(QDir(panel->directory()).absolutePath(), QDir::home().absolutePath());
    panel->reject();

    const QString data = node(0, 0)->filePath();
    QString target = data;
    if (situation != QLatin1String("self")) {
        target = TestEnvironment::makeFolder(QStringLiteral("copies")) + QStringLiteral("/a.png");
        QFile old(target);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    }
    if (situation == QLatin1String("unreadable") || situation == QLatin1String("gone"))
        QFile::remove(data);
    if (situation == QLatin1String("unreadable"))
        QVERIFY(QDir().mkdir(data)); // there, but no file to read
    view->savePanelDidEnd(result, target);
    // The copy runs in the background: a failure shows when it has ended.
    QTRY_COMPARE(view->findChild<QMessageBox *>() != nullptr, alert);
    QTRY_COMPARE(QImage(target).size() == QSize(20, 20), copied);
    QFile kept(target);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll() != "old", copied);
}

void TestGroupView::revealFallsBackToTheFolder()
{
    // The test session has no file manager on its bus: the folder is opened instead.
    writeImage(QStringLiteral("a.png"), QSize(20, 20));
    auto view = load();
    click(view.get(), node(0, 0));
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
    view->revealSelectedNodeData();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(catcher.opened, QList<QUrl>{QUrl::fromLocalFile(QDir(_data).absolutePath())});
}

// --- Image windows ----------------------------------------------------------------------------

void TestGroupView::oneWindowPerNode()
{
    writeImage(QStringLiteral("a.png"), QSize(400, 300));
    auto view = load();
    Node *a = node(0, 0);
    view->openImageWindowForNode(a);
    ImageController *first = view->imageWindowForNode(a);
    QVERIFY(first);
    QCOMPARE(first->window()->windowTitle(), QStringLiteral("a.png"));
    QCOMPARE(first->URL(), QStringLiteral("https://example.org/a.png"));
    QCOMPARE(first->window()->size(), QSize(400, 300));
    QVERIFY(first->window()->isVisible());

    first->window()->move(33, 44);
    first->window()->close(); // hides, the controller stays
    QVERIFY(!first->window()->isVisible());
    view->openImageWindowForNode(a);
    QCOMPARE(view->imageWindowForNode(a), first);
    QVERIFY(first->window()->isVisible());
    QCOMPARE(first->window()->pos(), QPoint(33, 44));

    view->cleanup();
    QVERIFY(!view->imageWindowForNode(a));
}

void TestGroupView::zoomArithmetic()
{
    // The test screen is small; an image of 400 x 300 leaves room for the largest size.
    writeImage(QStringLiteral("a.png"), QSize(400, 300));
    auto view = load();
    view->openImageWindowForNode(node(0, 0));
    ImageController *c = view->imageWindowForNode(node(0, 0));
    QCOMPARE(c->defaultWidth(), 400.0f);
    QCOMPARE(c->defaultHeight(), 300.0f);
    QCOMPARE(c->minimumContentSize(), QSizeF(100, 75));
    QCOMPARE(c->maximumContentSize(), QSizeF(600, 450));
    QCOMPARE(c->window()->contentAspectRatio(), QSize(400, 300));

    // The steps measure the content but size the whole frame, as a window's zoom does.
    const auto frame = [c] { return c->window()->frameGeometry().size(); };
    const QSize decorations = frame() - c->window()->size();
    c->zoomOut(); // larger by a tenth
    QCOMPARE(frame(), QSize(440, 330));
    c->zoomIn(); // smaller by a tenth of what the content is now
    QCOMPARE(frame(), (QSizeF(QSize(440, 330) - decorations) / 1.1).toSize());
    for (int i = 0; i < 10; ++i)
        c->zoomOut();
    QCOMPARE(frame(), QSize(600, 450)); // clamped at the maximum
    c->zoomOut();
    QCOMPARE(frame(), QSize(600, 450));
    for (int i = 0; i < 30; ++i)
        c->zoomIn();
    QCOMPARE(c->window()->size(), QSize(100, 75)); // never below the minimum content size
    c->zoomIn();
    QCOMPARE(c->window()->size(), QSize(100, 75));
    c->viewAtMaxSize();
    QCOMPARE(frame(), QSize(600, 450));
    c->viewAtMinSize();
    QCOMPARE(c->window()->size(), QSize(100, 75));

    // Past the maximum in one dimension only: exactly the maximum in both.
    c->window()->resizeContent(QSize(560, 300));
    c->zoomOut();
    QCOMPARE(frame(), QSize(600, 450));
    c->saveDocument(); // does nothing, and nothing breaks
}

void TestGroupView::defaultSizeAndCentre()
{
    writeImage(QStringLiteral("a.png"), QSize(300, 200));
    auto view = load();
    view->openImageWindowForNode(node(0, 0));
    ImageController *c = view->imageWindowForNode(node(0, 0));
    c->zoomOut();
    c->zoomOut();
    c->window()->move(0, 0);
    c->viewAtDefaultSize();
    QCOMPARE(c->window()->frameGeometry().size(), QSize(300, 200));
    const QRect screen = c->window()->screen()->availableGeometry();
    QVERIFY(qAbs(c->window()->frameGeometry().center().x() - screen.center().x()) <= 1);
    QVERIFY(qAbs(c->window()->frameGeometry().center().y() - screen.center().y()) <= 1);
    // The window settles to the image's proportions after a resize by the user.
    QCOMPARE(c->window()->aspectCorrected(QSize(360, 100)), QSize(360, 240));
    QCOMPARE(c->window()->aspectCorrected(QSize(500, 100)), QSize(450, 300)); // at the maximum
}

void TestGroupView::hiddenWindowRefreshedStaysHidden()
{
    writeImage(QStringLiteral("a.png"), QSize(300, 300));
    auto view = load();
    Node *a = node(0, 0);
    click(view.get(), a);
    view->openImageWindowForNode(a);
    ImageController *c = view->imageWindowForNode(a);
    c->window()->close();
    const qint64 before = c->imageView()->pixmap().cacheKey();
    writeImage(QStringLiteral("a.png"), QSize(200, 100));
    // The selected node's download finished: the view shows the new image and the window
    // gets it too, without being shown.
    emit _group->nodeDataLoaded(a);
    QVERIFY(!c->window()->isVisible());
    QVERIFY(c->imageView()->pixmap().cacheKey() != before);
    QCOMPARE(c->imageView()->pixmap().deviceIndependentSize().toSize(), QSize(200, 100));
    // A window follows its node's data when another node is selected, too.
    Preferences::shared().setOnline(false);
    click(view.get(), node(0, 1));
    writeImage(QStringLiteral("a.png"), QSize(100, 80));
    emit _group->nodeDataLoaded(a);
    QCOMPARE(c->imageView()->pixmap().deviceIndependentSize().toSize(), QSize(100, 80));
}

void TestGroupView::unreadableImageGivesNoWindow()
{
    QFile junk(QDir(_data).filePath(QStringLiteral("a.png")));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write("garbage");
    junk.close();
    auto view = load();
    QTest::ignoreMessage(QtWarningMsg, "ImageController (a.png): image == nil");
    view->openImageWindowForNode(node(0, 0));
    QVERIFY(!view->imageWindowForNode(node(0, 0)));
}

VANTOREL_TEST_MAIN(TestGroupView)
#include "test_groupview.moc"
