#include "TestEnvironment.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <QtTest>

// The global preferences and the data folder: defaults, the round trip through the settings,
// damaged values, and the folder's creation rules.
class TestPreferences : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void defaultsAndRoundTrip()
    {
        QSettings settings;
        Preferences prefs;
        QCOMPARE(prefs.lastView(), -1); // not read yet
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs), QVariantList({0, true, false, false, true, 60.0f, false}));
        QVERIFY(settings.allKeys().isEmpty()); // reading registers nothing

        prefs.setLastView(4);
        prefs.setOnline(false);
        prefs.setLogErrorsOnly(true);
        prefs.setBeepOnErrors(true);
        prefs.setDownloadMissingData(false);
        prefs.setTimeoutSeconds(12.5f);
        prefs.setSouthernHemisphere(true);
        prefs.savePreferences(settings);
        QCOMPARE(settings.value(QStringLiteral("isOnline")).toString(), QStringLiteral("0"));
        QCOMPARE(settings.value(QStringLiteral("lastView")).toString(), QStringLiteral("4"));
        Preferences again;
        again.loadPreferences(settings);
        QCOMPARE(values(again), QVariantList({4, false, true, true, false, 12.5f, true}));
    }

    void unreadableValues_data()
    {
        columns<QString, QVariant>("key", "stored");
        QTest::addColumn<int>("index"); // in values()
        QTest::addColumn<QVariant>("expected");
        QTest::newRow("lastView text") << "lastView" << QVariant("Moon") << 0 << QVariant(0);
        QTest::newRow("lastView huge")
            << "lastView" << QVariant("1e12") << 0 << QVariant(std::numeric_limits<int>::max());
        QTest::newRow("lastView negative") << "lastView" << QVariant(-7) << 0 << QVariant(-7);
        QTest::newRow("isOnline garbage") << "isOnline" << QVariant("yes") << 1 << QVariant(false);
        QTest::newRow("isOnline 2") << "isOnline" << QVariant(2) << 1 << QVariant(true);
        QTest::newRow("missing data list")
            << "downloadMissingData" << QVariant(QStringList{"a"}) << 4 << QVariant(false);
        QTest::newRow("timeout garbage")
            << "timeoutSeconds" << QVariant("soon") << 5 << QVariant(0.0f);
        QTest::newRow("timeout negative")
            << "timeoutSeconds" << QVariant("-5") << 5 << QVariant(-5.0f);
        QTest::newRow("timeout not finite")
            << "timeoutSeconds" << QVariant("inf") << 5 << QVariant(0.0f);
    }

    void unreadableValues()
    {
        QSettings settings;
        settings.setValue(fetch<QString>("key"), fetch<QVariant>("stored"));
        Preferences prefs;
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs).at(fetch<int>("index")), fetch<QVariant>("expected"));
    }

    void timeoutForThisRunOnlyIsNotStored()
    {
        Preferences prefs;
        QSettings settings;
        prefs.loadPreferences(settings);
        prefs.setTimeoutOverride(3.0f);
        QCOMPARE(prefs.timeoutSeconds(), 3.0f);
        prefs.savePreferences(settings);
        QCOMPARE(settings.value(QStringLiteral("timeoutSeconds")).toFloat(), 60.0f);
        // A value chosen in the panel ends the override and is stored.
        prefs.setTimeoutSeconds(30.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 30.0f);
        prefs.savePreferences(settings);
        QCOMPARE(settings.value(QStringLiteral("timeoutSeconds")).toFloat(), 30.0f);
        // Zero or less, from either source, is kept as given but never turns time-outs off.
        prefs.setTimeoutOverride(0.0f);
        QCOMPARE(prefs.timeoutSeconds(), 0.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 60.0f);
        prefs.setTimeoutSeconds(-5.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 60.0f);
    }

    void dataFolder()
    {
        // A new account has no per-user data folder at all: it is made, with its base.
        const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        QVERIFY(base.startsWith(TestEnvironment::home()));
        QDir(base).removeRecursively();
        const QString expected = QDir(base).filePath(QStringLiteral("Vantorel Data"));
        QCOMPARE(AppCore().prepareDataFolder(), expected);
        QVERIFY(QFileInfo(expected).isDir());

        // A plain file of that name counts as there, and nothing is made in its place.
        QVERIFY(TestEnvironment::writeFile(QDir(base).filePath(QStringLiteral("Plain")), {}));
        QVERIFY(AppCore::checkCreateFolder(QStringLiteral("Plain")));
        QVERIFY(QFileInfo(QDir(base).filePath(QStringLiteral("Plain"))).isFile());

        // A folder from the command line is made, however deep.
        const QString deeper = TestEnvironment::home() + QStringLiteral("/elsewhere/deeper");
        AppCore core;
        core.setDataFolderOverride(deeper);
        QCOMPARE(core.prepareDataFolder(), deeper);
        QVERIFY(QFileInfo(deeper).isDir());
    }

    void dataFolderFailureIsLogged()
    {
        // A plain file where the per-user data folder should be: nothing can be made inside it.
        const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        QDir(base).removeRecursively();
        QDir().mkpath(QFileInfo(base).path());
        QVERIFY(TestEnvironment::writeFile(base, {}));
        QTest::ignoreMessage(QtWarningMsg, "Can't create Data Folder!");
        const QString path = AppCore().prepareDataFolder();
        QFile::remove(base);
        QCOMPARE(path, QDir(base).filePath(QStringLiteral("Vantorel Data"))); // used all the same
    }

private:
    static QVariantList values(const Preferences &p)
    {
        return {p.lastView(),
                p.isOnline(),
                p.logErrorsOnly(),
                p.beepOnErrors(),
                p.downloadMissingData(),
                p.timeoutSeconds(),
                p.southernHemisphere()};
    }
};

VANTOREL_TEST_CORE_MAIN(TestPreferences)
#include "test_preferences.moc"
