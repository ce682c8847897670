#include "TestEnvironment.h"

#include "core/moon/MoonText.h"
#include "core/util/ResourceLocator.h"
#include "ui/moon/MoonImageView.h"
#include "ui/moon/MoonPhasePicture.h"
#include "ui/moon/MoonView.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QtTest>

#include <ctime>

// The Moon view on screen: its lines and picture, the buttons, the live timer, the hemisphere,
// the stored size, and the drawn phase pictures themselves.
class TestMoonView : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void showsTheCalculation();
    void buttonsStepAndReturn();
    void liveTimer();
    void southernHemisphere();
    void frameSize();
    void missingPhaseNames();

    void pictureNames_data();
    void pictureNames();
    void pictures_data();
    void pictures();
    void pictureHonoursPixelDensity();
    void unknownPictureLeavesTheViewEmpty();

private:
    QLabel *field(MoonView &view, const char *name);
    QPushButton *button(MoonView &view, const char *name);
    static const QDateTime kNow;
};

const QDateTime TestMoonView::kNow(QDate(2024, 3, 15), QTime(15, 42), QTimeZone::utc());

QLabel *TestMoonView::field(MoonView &view, const char *name)
{
    return view.findChild<QLabel *>(QLatin1String(name));
}

QPushButton *TestMoonView::button(MoonView &view, const char *name)
{
    return view.findChild<QPushButton *>(QLatin1String(name));
}

void TestMoonView::initTestCase()
{
    qputenv("TZ", "UTC");
    tzset();
}

void TestMoonView::init()
{
    TestEnvironment::resetState();
    TestEnvironment::setNow(kNow);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
}

void TestMoonView::cleanup()
{
    ResourceLocator::setResourceFolder(QStringLiteral(VANTOREL_TEST_RESOURCE_DIR));
}

void TestMoonView::showsTheCalculation()
{
    MoonView view;
    view.awakeFromNib();
    QCOMPARE(view.phaseNames().size(), 8);

    const QStringList lines = MoonText::lines(view.moonCalc());
    const char *const names[] = {"dateField",        "phasePercentField", "illuminationField",
                                 "distanceField",    "ageField",          "daysUntilFullField",
                                 "daysUntilNewField"};
    for (int i = 0; i < 7; ++i)
        QCOMPARE(field(view, names[i])->text(), lines.at(i));
    QCOMPARE(field(view, "dateField")->text(), QString("Moon Phase for March 15, 2024 03:42 PM"));

    const int octant = view.moonCalc().moonPhaseAsInteger();
    auto *image = view.findChild<MoonImageView *>(QStringLiteral("imageView"));
    QCOMPARE(image->imageName(), QStringLiteral("MoonPhase%1").arg(octant));
    QCOMPARE(field(view, "phaseNameField")->text(), view.phaseNames().at(octant));
    QCOMPARE(view.formatAgeString(), MoonText::formatAgeString(view.moonCalc()));
}

void TestMoonView::buttonsStepAndReturn()
{
    MoonView view;
    view.awakeFromNib();
    QLabel *date = field(view, "dateField");

    QTest::mouseClick(button(view, "nextDayButton"), Qt::LeftButton);
    QVERIFY(view.customDate());
    QCOMPARE(date->text(), QString("Moon Phase for March 16, 2024 12:00 AM"));

    QTest::mouseClick(button(view, "previousDayButton"), Qt::LeftButton);
    QVERIFY(!view.customDate());
    QCOMPARE(date->text(), QString("Moon Phase for March 15, 2024 03:42 PM"));

    QTest::mouseClick(button(view, "nextFullMoonButton"), Qt::LeftButton);
    QVERIFY(view.customDate());
    QCOMPARE(view.moonCalc().moonPhaseAsInteger(), 4);
    QCOMPARE(date->text(), MoonText::dateLine(view.moonCalc()));
    QCOMPARE(field(view, "phaseNameField")->text(), QString("Full Moon"));

    QTest::mouseClick(button(view, "nextNewMoonButton"), Qt::LeftButton);
    QCOMPARE(view.moonCalc().moonPhaseAsInteger(), 0);
    QCOMPARE(field(view, "phaseNameField")->text(), QString("New Moon"));

    QTest::mouseClick(button(view, "todayButton"), Qt::LeftButton);
    QVERIFY(!view.customDate());
    QCOMPARE(date->text(), QString("Moon Phase for March 15, 2024 03:42 PM"));

    for (const char *name : {"previousDayButton", "todayButton", "nextDayButton",
                             "nextFullMoonButton", "nextNewMoonButton"})
        QVERIFY(!button(view, name)->toolTip().isEmpty());
}

void TestMoonView::liveTimer()
{
    MoonView view;
    view.awakeFromNib();
    QVERIFY(view.timer()->isActive());
    QCOMPARE(view.timer()->interval(), 10000);
    QVERIFY(!view.timer()->isSingleShot());

    TestEnvironment::advance(3600);
    view.updateMoonDate();
    QCOMPARE(field(view, "dateField")->text(), QString("Moon Phase for March 15, 2024 04:42 PM"));

    view.setDateAddOneDay();
    TestEnvironment::advance(3600);
    view.updateMoonDate();
    QCOMPARE(field(view, "dateField")->text(), QString("Moon Phase for March 16, 2024 12:00 AM"));
}

void TestMoonView::southernHemisphere()
{
    MoonView view;
    view.awakeFromNib();
    view.checkSetDateToToday(
        QDateTime(QDate(2008, 1, 1), QTime(0, 0), MoonCalc::defaultTimeZone()));
    auto *image = view.findChild<MoonImageView *>(QStringLiteral("imageView"));
    QCOMPARE(image->imageName(), QString("MoonPhase6"));
    const QString illumination = field(view, "illuminationField")->text();

    view.setHemisphere(true);
    QVERIFY(view.southernHemisphere());
    QCOMPARE(image->imageName(), QString("MoonPhase2"));
    QCOMPARE(field(view, "phasePercentField")->text(), QString("Phase Percent: 22.97%"));
    QCOMPARE(field(view, "ageField")->text(), QString("Age: 6 days, 18 hours, 49 minutes"));
    QCOMPARE(field(view, "illuminationField")->text(), illumination);
    QCOMPARE(field(view, "phaseNameField")->text(), QString("Last Quarter")); // not mirrored

    view.setHemisphere(false);
    QCOMPARE(image->imageName(), QString("MoonPhase6"));
}

void TestMoonView::frameSize()
{
    {
        MoonView view;
        view.resize(640, 480);
        view.show();
        view.cleanup();
    }
    QCOMPARE(QSettings().value(MoonView::kViewSizeKey).toString(), QString("{640, 480}"));

    MoonView restored;
    restored.resize(300, 200);
    restored.awakeFromNib();
    QCOMPARE(restored.size(), QSize(640, 480));

    QSettings().setValue(MoonView::kViewSizeKey, QString());
    MoonView untouched;
    untouched.resize(300, 200);
    untouched.loadFrameSize();
    QCOMPARE(untouched.size(), QSize(300, 200));
}

void TestMoonView::missingPhaseNames()
{
    ResourceLocator::setResourceFolder(TestEnvironment::makeFolder("empty-resources"));
    MoonView view;
    QTest::ignoreMessage(QtWarningMsg, "phaseNamesDict failed to load");
    view.awakeFromNib();
    QVERIFY(view.phaseNames().isEmpty());
    QVERIFY(field(view, "phaseNameField")->text().isEmpty());
    // The rest of the view is whole.
    QVERIFY(field(view, "dateField")->text().startsWith("Moon Phase for "));
    auto *image = view.findChild<MoonImageView *>(QStringLiteral("imageView"));
    QVERIFY(MoonPhasePicture::exists(image->imageName()));
}

void TestMoonView::pictureNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("octant");
    QTest::newRow("first") << "MoonPhase0" << 0;
    QTest::newRow("last") << "MoonPhase7" << 7;
    QTest::newRow("past the last") << "MoonPhase8" << -1;
    QTest::newRow("negative") << "MoonPhase-1" << -1;
    QTest::newRow("two digits") << "MoonPhase01" << -1;
    QTest::newRow("other case") << "moonphase3" << -1;
    QTest::newRow("empty") << "" << -1;
}

void TestMoonView::pictureNames()
{
    QFETCH(QString, name);
    QFETCH(int, octant);
    QCOMPARE(MoonPhasePicture::phaseForName(name), octant);
    if (octant >= 0)
        QCOMPARE(MoonPhasePicture::nameForPhase(octant), name);
}

void TestMoonView::pictures_data()
{
    // Brightness sampled along the horizontal diameter, as fractions of the radius from the
    // centre: near the left limb, halfway left, the centre, halfway right, near the right limb.
    QTest::addColumn<int>("octant");
    QTest::addColumn<QString>("litPattern");
    QTest::newRow("new") << 0 << "-----";
    QTest::newRow("waxing crescent") << 1 << "----#";
    QTest::newRow("first quarter") << 2 << "--###";
    QTest::newRow("waxing gibbous") << 3 << "-####";
    QTest::newRow("full") << 4 << "#####";
    QTest::newRow("waning gibbous") << 5 << "####-";
    QTest::newRow("last quarter") << 6 << "##---";
    QTest::newRow("waning crescent") << 7 << "#----";
}

void TestMoonView::pictures()
{
    QFETCH(int, octant);
    QFETCH(QString, litPattern);
    const QImage image = MoonPhasePicture::image(octant, QSize(200, 200));
    const double offsets[] = {-0.9, -0.5, 0.05, 0.5, 0.9};
    QString seen;
    for (double offset : offsets) {
        // A little below the centre line, away from the drawn plains' centres.
        const QColor colour = image.pixelColor(int(100 + offset * 95), 100);
        QCOMPARE(colour.alpha(), 255);
        seen += colour.lightness() > 160 ? QLatin1Char('#') : QLatin1Char('-');
    }
    QCOMPARE(seen, litPattern);
    // Outside the disc the picture is transparent.
    QCOMPARE(image.pixelColor(2, 2).alpha(), 0);
    QCOMPARE(image.pixelColor(197, 197).alpha(), 0);
}

void TestMoonView::pictureHonoursPixelDensity()
{
    const QImage single = MoonPhasePicture::image(2, QSize(64, 64));
    const QImage dense = MoonPhasePicture::image(2, QSize(64, 64), 2.0);
    QCOMPARE(single.size(), QSize(64, 64));
    QCOMPARE(dense.size(), QSize(128, 128));
    QCOMPARE(dense.devicePixelRatio(), 2.0);
    // Drawn on the denser grid itself: the terminator of the first quarter runs down the middle
    // column to within a device pixel or two.
    QVERIFY(dense.pixelColor(61, 70).lightness() < 100);
    QVERIFY(dense.pixelColor(67, 70).lightness() > 160);
}

void TestMoonView::unknownPictureLeavesTheViewEmpty()
{
    MoonImageView view;
    view.resize(120, 120);
    view.setImageName(QStringLiteral("MoonPhase4"));
    QImage drawn = view.grab().toImage();
    QVERIFY(drawn.pixelColor(60, 60).lightness() > 160);

    view.setImageName(QStringLiteral("NoSuchPicture"));
    drawn = view.grab().toImage();
    const QColor background = drawn.pixelColor(2, 2);
    QCOMPARE(drawn.pixelColor(60, 60), background);
}

VANTOREL_TEST_MAIN(TestMoonView)
#include "test_moonview.moc"
