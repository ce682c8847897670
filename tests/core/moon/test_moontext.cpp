#include "TestEnvironment.h"

#include "core/moon/MoonCalc.h"
#include "core/moon/MoonPhaseNames.h"
#include "core/moon/MoonText.h"

#include <QRegularExpression>
#include <QtTest>

#include <ctime>

// The Moon's texts as the view and "vantorel moon" show them, and the phase names resource.
class TestMoonText : public QObject {
    Q_OBJECT

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

    void ageText_data()
    {
        columns<int, int, int, QString>("days", "hours", "minutes", "text");
        QTest::newRow("all plural") << 22 << 17 << 54 << "22 days, 17 hours, 54 minutes";
        QTest::newRow("singulars, zero hours") << 1 << 0 << 1 << "1 day, 0 hours, 1 minute";
        QTest::newRow("no days") << 0 << 4 << 48 << "4 hours, 48 minutes";
        QTest::newRow("no minutes keeps the comma") << 5 << 3 << 0 << "5 days, 3 hours, ";
        QTest::newRow("nothing but zero hours") << 0 << 0 << 0 << "0 hours, ";
        QTest::newRow("negatives add nothing") << -1 << -1 << -1 << "";
    }

    void ageText()
    {
        QCOMPARE(MoonText::formatAgeString(fetch<int>("days"), fetch<int>("hours"),
                                           fetch<int>("minutes")),
                 fetch<QString>("text"));
    }

    void distance_data()
    {
        columns<QLocale, double, QString>("locale", "kilometres", "text");
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        const QLocale german(QLocale::German, QLocale::Germany);
        QTest::newRow("English") << english << 402126.4922 << "402,126.49";
        QTest::newRow("German separators") << german << 402126.4922 << "402.126,49";
        QTest::newRow("C locale still groups") << QLocale::c() << 402126.4922 << "402,126.49";
        QTest::newRow("below one has no integer digit") << english << 0.5 << ".50";
        QTest::newRow("negative in parentheses") << english << -1234.5 << "(1,234.50)";
        QTest::newRow("small negative keeps its zero") << german << -0.25 << "(0,25)";
    }

    void distance()
    {
        QCOMPARE(MoonText::formatDistance(fetch<double>("kilometres"), fetch<QLocale>("locale")),
                 fetch<QString>("text"));
    }

    void workedDateLines()
    {
        MoonCalc calc;
        calc.setDate(QDateTime(QDate(2008, 1, 1), QTime(0, 0), MoonCalc::defaultTimeZone()));
        const QStringList lines = MoonText::lines(calc);
        QCOMPARE(lines.mid(0, 5) + lines.mid(6),
                 QStringList({"Moon Phase for January 01, 2008 12:00 AM", "Phase Percent: 77.03%",
                              "Illumination: 43.65%", "Distance: 402,126.49 km",
                              "Age: 22 days, 17 hours, 54 minutes",
                              "Next New Moon: January 08, 2008 11:37 AM"}));
        QVERIFY2(lines.at(5).startsWith("Next Full Moon: January 22, 2008 "),
                 qPrintable(lines.at(5)));

        // The distance follows the locale; nothing else does.
        const QStringList german =
            MoonText::lines(calc, QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(german.at(3), QString("Distance: 402.126,49 km"));
        QCOMPARE(german.at(1), lines.at(1));

        // A waning Moon has the same name seen from the south; only its picture is mirrored.
        const QStringList names = MoonPhaseNames::loadFromResources().value_or(QStringList());
        QCOMPARE(MoonText::phaseName(calc, names), QString("Last Quarter"));
        calc.setDisplayForSouthernHemisphere(true);
        QCOMPARE(calc.moonPhaseAsInteger(), 2);
        QCOMPARE(MoonText::phaseName(calc, names), QString("Last Quarter"));
    }

    void percentagesAlwaysHaveTwoDecimals()
    {
        const QRegularExpression percent(
            QStringLiteral("^(Phase Percent|Illumination): \\d{1,3}\\.\\d\\d%$"));
        const QRegularExpression age(
            QStringLiteral("^Age: (\\d+ days?, )?\\d+ hours?, (\\d+ minutes?)?$"));
        MoonCalc calc;
        QDateTime date(QDate(2023, 1, 1), QTime(0, 0), MoonCalc::defaultTimeZone());
        bool sawSmallIllumination = false;
        for (int i = 0; i < 400; ++i, date = date.addSecs(23 * 3600 + 7 * 60)) {
            calc.setDate(date);
            const QStringList lines = MoonText::lines(calc, QLocale(QLocale::German));
            QVERIFY2(percent.match(lines.at(1)).hasMatch(), qPrintable(lines.at(1)));
            QVERIFY2(percent.match(lines.at(2)).hasMatch(), qPrintable(lines.at(2)));
            QVERIFY2(age.match(lines.at(4)).hasMatch(), qPrintable(lines.at(4)));
            sawSmallIllumination |= lines.at(2).startsWith(QLatin1String("Illumination: 0."));
        }
        QVERIFY(sawSmallIllumination);
    }

    // With the southern preference on, a waxing crescent of fraction 0.1 reads as the mirrored
    // phase: picture 7, 90.00 % and an age of 26 days 13 hours.
    void southernWaxingCrescent()
    {
        MoonCalc calc;
        // Bisect the instant of fraction 0.1 after the new moon of 2008-01-08.
        const double newMoon = MoonCalc::getTruePhase(1336, 0.0);
        double low = newMoon + 1.0;
        double high = newMoon + 5.0;
        for (int i = 0; i < 40; ++i) {
            const double mid = (low + high) / 2.0;
            calc.setDate(MoonCalc::calendarDateForJulianDate(mid));
            (calc.moonPhaseAsDouble() < 0.1 ? low : high) = mid;
        }
        calc.setDate(MoonCalc::calendarDateForJulianDate(high));
        QVERIFY(std::abs(calc.moonPhaseAsDouble() - 0.1) < 1e-4);
        QCOMPARE(calc.moonPhaseAsInteger(), 1);
        const double illumination = calc.moonIllumination();

        calc.setDisplayForSouthernHemisphere(true);
        QCOMPARE(calc.moonPhaseAsInteger(), 7);
        QCOMPARE(MoonText::phasePercentLine(calc), QString("Phase Percent: 90.00%"));
        QCOMPARE(calc.moonAgeDays(), 26);
        QCOMPARE(calc.moonAgeHours(), 13);
        QVERIFY(MoonText::ageLine(calc).startsWith("Age: 26 days, 13 hours, "));
        QCOMPARE(calc.moonIllumination(), illumination);
    }

    void phaseNames()
    {
        const std::optional<QStringList> names = MoonPhaseNames::loadFromResources();
        QVERIFY(names);
        QCOMPARE(names->size(), 8);
        QCOMPARE(names->at(0), QString("New Moon"));
        QCOMPARE(names->at(4), QString("Full Moon"));
        QCOMPARE(MoonPhaseNames::nameForPhase(*names, 8), QString());
    }

    // A damaged names file gives no names; a missing name leaves its place empty.
    void phaseNamesFile_data()
    {
        columns<QVariant, QStringList>("root", "names");
        QVariantMap seven;
        for (const int i : {0, 1, 2, 4, 5, 6, 7})
            seven.insert(QString::number(i), QString::number(i));
        QTest::newRow("missing file") << QVariant() << QStringList{"none"};
        QTest::newRow("not a property list") << QVariant("New, Full") << QStringList{"none"};
        QTest::newRow("no PhaseNames entry")
            << QVariant(QVariantMap{{"Names", QVariantMap{{"0", "New"}}}}) << QStringList{"none"};
        QTest::newRow("PhaseNames not a dictionary")
            << QVariant(QVariantMap{{"PhaseNames", QVariantList{"New"}}}) << QStringList{"none"};
        QTest::newRow("one name missing") << QVariant(QVariantMap{{"PhaseNames", seven}})
                                          << QStringList{"0", "1", "2", "", "4", "5", "6", "7"};
    }

    void phaseNamesFile()
    {
        const QString path = TestEnvironment::makeFolder("names") + "/PhaseNames.plist";
        const QVariant root = fetch<QVariant>("root");
        if (root.typeId() == QMetaType::QVariantMap)
            QVERIFY(TestEnvironment::writePropertyList(path, root.toMap(), true));
        else if (root.isValid())
            QVERIFY(TestEnvironment::writeFile(path, root.toByteArray()));
        QCOMPARE(MoonPhaseNames::load(path).value_or(QStringList{"none"}),
                 fetch<QStringList>("names"));
    }
};

VANTOREL_TEST_CORE_MAIN(TestMoonText)
#include "test_moontext.moc"
