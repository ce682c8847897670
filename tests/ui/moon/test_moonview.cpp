#include "../UiFixture.h"

#include "core/moon/MoonText.h"
#include "ui/moon/MoonImageView.h"
#include "ui/moon/MoonPhasePicture.h"

#include <QTimer>

#include <ctime>

// The Moon view on screen: that its lines, phase name and picture show the page's state after
// each button, the live timer and the hemisphere. The date arithmetic and the texts are the
// core's, tested there.
class TestMoonView : public QObject {
    Q_OBJECT

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

private slots:
    void initTestCase()
    {
        qputenv("TZ", "UTC");
        tzset();
    }
    void init()
    {
        TestEnvironment::resetState();
        TestEnvironment::setNow(QDateTime(QDate(2024, 3, 15), QTime(15, 42), QTimeZone::utc()));
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }

    void buttons_data()
    {
        columns<QStringList, bool, int>("buttons", "live", "octant"); // octant -1: any
        QTest::newRow("none") << QStringList() << true << -1;
        QTest::newRow("Previous Day") << QStringList{"Previous Day"} << false << -1;
        QTest::newRow("Next Day, Today") << QStringList{"Next Day", "Today"} << true << -1;
        QTest::newRow("Next Day, Previous Day")
            << QStringList{"Next Day", "Previous Day"} << true << -1;
        QTest::newRow("Next Full Moon") << QStringList{"Next Full Moon"} << false << 4;
        QTest::newRow("Next New Moon") << QStringList{"Next New Moon"} << false << 0;
    }
    void buttons()
    {
        MoonView view;
        view.awakeFromNib();
        for (const QString &text : fetch<QStringList>("buttons"))
            button(&view, text)->click();
        QCOMPARE(view.customDate(), !fetch<bool>("live"));
        const int octant = view.moonCalc().moonPhaseAsInteger();
        QVERIFY(fetch<int>("octant") < 0 || octant == fetch<int>("octant"));
        QCOMPARE(shown(view), MoonText::lines(view.moonCalc()).mid(0, 7)
                                  << view.phaseNames().value(octant)
                                  << MoonPhasePicture::nameForPhase(octant));
        if (fetch<bool>("live"))
            QCOMPARE(shown(view).first(), "Moon Phase for March 15, 2024 03:42 PM");
    }

    void liveTimerAndHemisphere()
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
};

VANTOREL_TEST_MAIN(TestMoonView)
#include "test_moonview.moc"
