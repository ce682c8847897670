#include "TestEnvironment.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QtTest>

// The global preferences and the data folder: defaults, the round trip through the settings,
// damaged values, and the folder's creation rules.
class TestPreferences : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void firstRunDefaults();
    void roundTrip();
    void unreadableValues_data();
    void unreadableValues();
    void timeoutForThisRunOnlyIsNotStored();

    void dataFolderCreatedWithItsBase();
    void existingFolderOrFileCounts();
    void dataFolderFailureIsLogged();
    void dataFolderOverride();
};

void TestPreferences::firstRunDefaults()
{
    Preferences prefs;
    QCOMPARE(prefs.lastView(), -1); // not read yet
    QSettings settings;
    prefs.loadPreferences(settings);
    QCOMPARE(prefs.lastView(), 0);
    QVERIFY(prefs.isOnline());
    QVERIFY(!prefs.logErrorsOnly());
    QVERIFY(!prefs.beepOnErrors());
    QVERIFY(prefs.downloadMissingData());
    QCOMPARE(prefs.timeoutSeconds(), 60.0f);
    QVERIFY(!prefs.southernHemisphere());
    // Reading registers nothing in the store.
    QVERIFY(settings.allKeys().isEmpty());
}

void TestPreferences::roundTrip()
{
    Preferences prefs;
    prefs.setLastView(4);
    prefs.setOnline(false);
    prefs.setLogErrorsOnly(true);
    prefs.setBeepOnErrors(true);
    prefs.setDownloadMissingData(false);
    prefs.setTimeoutSeconds(12.5f);
    prefs.setSouthernHemisphere(true);
    {
        QSettings settings;
        prefs.savePreferences(settings);
    }
    QSettings settings;
    QCOMPARE(settings.value(QStringLiteral("isOnline")).toString(), QStringLiteral("0"));
    QCOMPARE(settings.value(QStringLiteral("lastView")).toString(), QStringLiteral("4"));
    Preferences again;
    again.loadPreferences(settings);
    QCOMPARE(again.lastView(), 4);
    QVERIFY(!again.isOnline());
    QVERIFY(again.logErrorsOnly());
    QVERIFY(again.beepOnErrors());
    QVERIFY(!again.downloadMissingData());
    QCOMPARE(again.timeoutSeconds(), 12.5f);
    QVERIFY(again.southernHemisphere());
}

void TestPreferences::unreadableValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("lastView text") << "lastView" << QVariant("Moon") << QVariant(0);
    QTest::newRow("lastView huge")
        << "lastView" << QVariant("1e12") << QVariant(std::numeric_limits<int>::max());
    QTest::newRow("lastView negative") << "lastView" << QVariant(-7) << QVariant(-7);
    QTest::newRow("isOnline garbage") << "isOnline" << QVariant("yes") << QVariant(false);
    QTest::newRow("isOnline 2") << "isOnline" << QVariant(2) << QVariant(true);
    QTest::newRow("timeout garbage") << "timeoutSeconds" << QVariant("soon") << QVariant(0.0f);
    QTest::newRow("timeout negative") << "timeoutSeconds" << QVariant("-5") << QVariant(-5.0f);
    QTest::newRow("timeout not finite") << "timeoutSeconds" << QVariant("inf") << QVariant(0.0f);
    QTest::newRow("missing data list")
        << "downloadMissingData" << QVariant(QStringList{"a"}) << QVariant(false);
}

void TestPreferences::unreadableValues()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    QFETCH(QVariant, expected);
    QSettings settings;
    settings.setValue(key, stored);
    Preferences prefs;
    prefs.loadPreferences(settings);
    if (key == QLatin1String("lastView"))
        QCOMPARE(prefs.lastView(), expected.toInt());
    else if (key == QLatin1String("isOnline"))
        QCOMPARE(prefs.isOnline(), expected.toBool());
    else if (key == QLatin1String("timeoutSeconds"))
        QCOMPARE(prefs.timeoutSeconds(), expected.toFloat());
    else
        QCOMPARE(prefs.downloadMissingData(), expected.toBool());
}

void TestPreferences::timeoutForThisRunOnlyIsNotStored()
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
    QCOMPARE(prefs.timeoutSeconds(), 30.0f);
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

void TestPreferences::dataFolderCreatedWithItsBase()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    QVERIFY(base.startsWith(TestEnvironment::home()));
    QDir(base).removeRecursively(); // a new account has no data folder at all
    AppCore core;
    const QString path = core.prepareDataFolder();
    QCOMPARE(path, QDir(base).filePath(QStringLiteral("Vantorel Data")));
    QVERIFY(QFileInfo(path).isDir());
    QCOMPARE(AppCore::pathFromApplicationSupportFolder(QStringLiteral("X")),
             QDir(base).filePath(QStringLiteral("X")));
}

void TestPreferences::existingFolderOrFileCounts()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    QDir().mkpath(base);
    QFile plain(QDir(base).filePath(QStringLiteral("Plain")));
    QVERIFY(plain.open(QIODevice::WriteOnly));
    plain.close();
    QVERIFY(AppCore::folderExists(plain.fileName()));
    QVERIFY(AppCore::checkCreateFolder(QStringLiteral("Plain")));
    QVERIFY(QFileInfo(plain.fileName()).isFile()); // nothing was created in its place
}

void TestPreferences::dataFolderFailureIsLogged()
{
    // A plain file where the per-user data folder should be: nothing can be made inside it.
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    QDir(base).removeRecursively();
    QDir().mkpath(QFileInfo(base).path());
    QFile blocker(base);
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();

    QTest::ignoreMessage(QtWarningMsg, "Can't create Data Folder!");
    AppCore core;
    const QString path = core.prepareDataFolder();
    QFile::remove(base);
    QCOMPARE(path, QDir(base).filePath(QStringLiteral("Vantorel Data"))); // used all the same
}

void TestPreferences::dataFolderOverride()
{
    const QString folder = TestEnvironment::home() + QStringLiteral("/elsewhere/deeper");
    AppCore core;
    core.setDataFolderOverride(folder);
    QCOMPARE(core.prepareDataFolder(), folder);
    QVERIFY(QFileInfo(folder).isDir());
}

VANTOREL_TEST_CORE_MAIN(TestPreferences)
#include "test_preferences.moc"
