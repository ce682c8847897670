#include "TestEnvironment.h"

#include "app/ResourceLocator.h"
#include "groups/Domain.h"
#include "groups/DomainGroup.h"
#include "groups/GroupOutlineModel.h"
#include "groups/GroupView.h"
#include "nodes/Node.h"
#include "support/ActivityLog.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QSettings>
#include <QSplitter>
#include <QTreeView>
#include <QtTest>

// An image group on screen: what it restores at loading (expansion, split view, size) and what
// it stores at the end.
class TestGroupView : public QObject {
    Q_OBJECT

private slots:
    void init();

    void expansionRestored();
    void userExpansionRemembered();
    void layoutRoundTrip();
    void collapsedPaneComesBackCollapsed();
    void missingFileLeavesTheSplash();

private:
    std::unique_ptr<GroupView> load(const QString &groupName = QStringLiteral("Sun"))
    {
        auto view = std::make_unique<GroupView>(_group.get(), &_log);
        view->awakeFromNib();
        view->resize(900, 600);
        view->show();
        view->loadDomainDataForGroup(groupName, 0, QStringLiteral("DataSun.plist"), _data);
        return view;
    }
    QTreeView *tree(GroupView *view) { return view->domainsList(); }
    bool expanded(GroupView *view, int row)
    {
        return tree(view)->isExpanded(view->outlineModel()->index(row, 0));
    }

    std::unique_ptr<DomainGroup> _group;
    ActivityLog _log;
    QString _data;
};

void TestGroupView::init()
{
    TestEnvironment::resetState();
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    const QString folder = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    const auto domain = [](const QString &name, const QString &dest) {
        return QVariantMap{{"DomainName", name}, {"Node0", TestEnvironment::nodeDict(dest)}};
    };
    QVERIFY(TestEnvironment::writePropertyList(
        folder + QStringLiteral("/DataSun.plist"),
        {{"Domain0", domain("Never", "a.png")},
         {"Domain1", domain("Opened", "b.png")},
         {"Domain2", domain("Closed", "c.png")}}));
    ResourceLocator::setDefinitionsFolder(folder);
    _group = std::make_unique<DomainGroup>();
}

void TestGroupView::expansionRestored()
{
    QSettings settings;
    settings.setValue(QStringLiteral("Opened Expanded"), 1);
    settings.setValue(QStringLiteral("Closed Expanded"), 2);
    auto view = load();
    QVERIFY(expanded(view.get(), 0));
    QVERIFY(expanded(view.get(), 1));
    QVERIFY(!expanded(view.get(), 2));
    // Restoring is not the user's doing and writes nothing.
    QVERIFY(!settings.contains(QStringLiteral("Never Expanded")));
}

void TestGroupView::userExpansionRemembered()
{
    auto view = load();
    tree(view.get())->collapse(view->outlineModel()->index(0, 0));
    QCOMPARE(QSettings().value(QStringLiteral("Never Expanded")).toInt(), 2);
    tree(view.get())->expand(view->outlineModel()->index(0, 0));
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
    const QStringList rects = settings.value(QStringLiteral("SunViewSplitViewRects")).toStringList();
    QCOMPARE(rects.size(), 2);

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
    const QStringList rects =
        QSettings().value(QStringLiteral("SunViewSplitViewRects")).toStringList();
    QCOMPARE(rects.value(1), QStringLiteral("{{0, 0}, {0, 0}}"));
    auto again = load();
    QCOMPARE(again->splitView()->sizes().value(1), 0);
}

void TestGroupView::missingFileLeavesTheSplash()
{
    ResourceLocator::setDefinitionsFolder(TestEnvironment::makeFolder(QStringLiteral("empty")));
    ResourceLocator::setResourceFolder(TestEnvironment::makeFolder(QStringLiteral("noresources")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Failed to load rootDict!")));
    auto view = load();
    ResourceLocator::setResourceFolder(QStringLiteral(VANTOREL_TEST_RESOURCE_DIR));
    QCOMPARE(view->outlineModel()->rowCount(), 0);
    QVERIFY(!view->splashImage().isNull());
    QCOMPARE(view->imageView()->pixmap().cacheKey(), view->splashImage().cacheKey());
}

VANTOREL_TEST_MAIN(TestGroupView)
#include "test_groupview.moc"
