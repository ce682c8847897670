#include "TestEnvironment.h"

#include "core/util/GeometryText.h"
#include "core/util/ImageScaling.h"
#include "core/util/SplitLayout.h"

#include <QtTest>

// The stored shapes of windows and split panes, and the size an image is shown at.
class TestSupport : public QObject {
    Q_OBJECT

private slots:
    // Both ways; a huge stored size is bounded, a negative one is empty.
    void geometryText()
    {
        QCOMPARE(GeometryText::toRect(u"{{10, 20}, {300, 400}}"_s), QRect(10, 20, 300, 400));
        QCOMPARE(GeometryText::fromRect(QRect(10, 20, 300, 400)), u"{{10, 20}, {300, 400}}"_s);
        QCOMPARE(GeometryText::toSize(u"{800, 600}"_s), QSize(800, 600));
        QCOMPARE(GeometryText::fromSize(QSize(800, 600)), u"{800, 600}"_s);
        QCOMPARE(GeometryText::toSize(u"{1e300, 5}"_s), QSize(1 << 20, 5));
        QVERIFY(GeometryText::isEmptyRect(GeometryText::toRect(u"{{5, 5}, {-3, 40}}"_s)));
    }

    // Stored rectangles beyond the panes are ignored; a zero one collapses its pane along the
    // dividing axis.
    void splitRestore()
    {
        const QList<QRect> panes{QRect(0, 0, 200, 500), QRect(204, 0, 600, 500)};
        QCOMPARE(SplitLayout::restoredRects(
                     {"{{0, 0}, {300, 500}}", "{{304, 0}, {500, 500}}", "{{1, 1}, {1, 1}}"}, panes,
                     true),
                 QList<QRect>({QRect(0, 0, 300, 500), QRect(304, 0, 500, 500)}));
        QCOMPARE(SplitLayout::restoredRects({"{{0, 0}, {0, 0}}"}, panes, false),
                 QList<QRect>({QRect(0, 0, 200, 0), panes[1]}));
    }

    void imageScaling_data()
    {
        columns<QSize, QSize>("pixels", "points");
        QTest::newRow("wide") << QSize(1600, 1200) << QSize(800, 600);
        QTest::newRow("tall") << QSize(900, 1200) << QSize(600, 800);
        QTest::newRow("truncated") << QSize(801, 10) << QSize(800, 9);
        QTest::newRow("both sides too long") << QSize(2000, 1001) << QSize(800, 400);
        QTest::newRow("never enlarged") << QSize(640, 480) << QSize(640, 480);
    }

    void imageScaling()
    {
        QCOMPARE(ImageScaling::scaledSize(fetch<QSize>("pixels")), fetch<QSize>("points"));
    }
};

VANTOREL_TEST_CORE_MAIN(TestSupport)
#include "test_support.moc"
