#include "../UiFixture.h"

#include "core/moon/MoonText.h"
#include "ui/moon/MoonImageView.h"
#include "ui/moon/MoonPhasePicture.h"
#include "ui/moon/MoonView.h"

#include <QTimer>

#include <ctime>

// The Moon view on screen: that its lines, phase name and picture show the page's state after
// each button, the live timer, the hemisphere, and the drawn phase pictures. The date arithmetic
// and the texts are the core's, tested there.
class TestMoonView : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("TZ", "UTC");
        tzset();
    }
    void init();
    void buttons_data();
    void buttons();
    void liveTimerAndHemisphere();
    void pictures_data();
    void pictures();

private:
    // The seven lines, the phase name and the picture's name.
    static QStringList shown(const MoonView &view)
    {
        QStringList shown;
        for (const char *name :
             {"dateField", "phasePercentField", "illuminationField", "distanceField", "ageField",
              "daysUntilFullField", "daysUntilNewField", "phaseNameField"})
            shown << view.findChild<QLabel *>(name)->text();
        return shown << view.findChild<MoonImageView *>()->imageName();
    }
};

void TestMoonView::init()
{
    TestEnvironment::resetState();
    TestEnvironment::setNow(QDateTime(QDate(2024, 3, 15), QTime(15, 42), QTimeZone::utc()));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
}

void TestMoonView::buttons_data()
{
    QTest::addColumn<QStringList>("buttons"); // clicked in turn, from the present
    QTest::addColumn<bool>("live");
    QTest::addColumn<int>("octant"); // -1: whatever the date gives
    QTest::newRow("none") << QStringList() << true << -1;
    QTest::newRow("Previous Day") << QStringList{"Previous Day"} << false << -1;
    QTest::newRow("Next Day, Today") << QStringList{"Next Day", "Today"} << true << -1;
    QTest::newRow("Next Day, Previous Day")
        << QStringList{"Next Day", "Previous Day"} << true << -1;
    QTest::newRow("Next Full Moon") << QStringList{"Next Full Moon"} << false << 4;
    QTest::newRow("Next New Moon") << QStringList{"Next New Moon"} << false << 0;
}

void TestMoonView::buttons()
{
    QFETCH(QStringList, buttons);
    QFETCH(bool, live);
    QFETCH(int, octant);
    MoonView view;
    view.awakeFromNib();
    for (const QString &text : buttons)
        button(&view, text)->click();
    QCOMPARE(view.customDate(), !live);
    const MoonCalc &moon = view.moonCalc();
    if (octant >= 0)
        QCOMPARE(moon.moonPhaseAsInteger(), octant);
    QCOMPARE(shown(view), MoonText::lines(moon).mid(0, 7)
                              << view.phaseNames().value(moon.moonPhaseAsInteger())
                              << MoonPhasePicture::nameForPhase(moon.moonPhaseAsInteger()));
    if (live)
        QCOMPARE(shown(view).first(), "Moon Phase for March 15, 2024 03:42 PM");
}

void TestMoonView::liveTimerAndHemisphere()
{
    MoonView view;
    view.awakeFromNib();
    QVERIFY(view.timer()->isActive() && !view.timer()->isSingleShot());
    QCOMPARE(view.timer()->interval(), 10000);
    TestEnvironment::advance(3600);
    view.updateMoonDate(); // what a tick does
    QCOMPARE(shown(view).first(), "Moon Phase for March 15, 2024 04:42 PM");

    // In the south the picture is mirrored; the phase keeps its true name.
    view.checkSetDateToToday(
        QDateTime(QDate(2008, 1, 1), QTime(0, 0), MoonCalc::defaultTimeZone()));
    QCOMPARE(shown(view).mid(7), QStringList({"Last Quarter", "MoonPhase6"}));
    view.setHemisphere(true);
    QCOMPARE(shown(view).mid(7), QStringList({"Last Quarter", "MoonPhase2"}));
    QCOMPARE(shown(view).mid(0, 7), MoonText::lines(view.moonCalc()).mid(0, 7));
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
    QString seen;
    for (double offset : {-0.9, -0.5, 0.05, 0.5, 0.9}) {
        // A little below the centre line, away from the drawn plains' centres.
        const QColor colour = image.pixelColor(int(100 + offset * 95), 100);
        QCOMPARE(colour.alpha(), 255);
        seen += colour.lightness() > 160 ? QLatin1Char('#') : QLatin1Char('-');
    }
    QCOMPARE(seen, litPattern);
    // Outside the disc the picture is transparent.
    QCOMPARE(image.pixelColor(2, 2).alpha() + image.pixelColor(197, 197).alpha(), 0);
    // A dense screen gets a picture drawn on its own grid.
    const QImage dense = MoonPhasePicture::image(octant, QSize(64, 64), 2.0);
    QCOMPARE(dense.size(), QSize(128, 128));
    QCOMPARE(dense.devicePixelRatio(), 2.0);
}

VANTOREL_TEST_MAIN(TestMoonView)
#include "test_moonview.moc"
