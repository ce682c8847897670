#include "TestEnvironment.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"

#include <QStandardPaths>

// The global preferences and the data folder: defaults, the settings keys both ways, damaged
// values, and the folder's creation rules.
class TestPreferences : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void defaultsAndKeys()
    {
        QSettings settings;
        Preferences prefs;
        QCOMPARE(prefs.lastView(), -1); // not read yet
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs), QVariantList({0, true, false, false, true, 60.0f, false}));
        QVERIFY(settings.allKeys().isEmpty()); // reading registers nothing

        const QStringList keys =
            QStringLiteral("lastView isOnline logErrorsOnly beepOnErrors "
                           "downloadMissingData timeoutSeconds southernHemisphere")
                .split(' ');
        const QStringList stored = u"4 0 1 1 0 12.5 1"_s.split(' ');
        for (int i = 0; i < keys.size(); ++i)
            settings.setValue(keys[i], stored[i]);
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs), QVariantList({4, false, true, true, false, 12.5f, true}));
        settings.clear();
        prefs.savePreferences(settings);
        for (int i = 0; i < keys.size(); ++i)
            QCOMPARE(settings.value(keys[i]).toString(), stored[i]);
    }

    void unreadableValues_data()
    {
        columns<QString, QVariant, int, QVariant>("key", "stored", "index", "expected");
        const auto row = [](const char *name, const char *key, const QVariant &stored, int index,
                            const QVariant &expected) {
            QTest::newRow(name) << QString::fromLatin1(key) << stored << index << expected;
        };
        row("lastView text", "lastView", "Moon", 0, 0);
        row("lastView huge", "lastView", "1e12", 0, std::numeric_limits<int>::max());
        row("isOnline garbage", "isOnline", "yes", 1, false);
        row("isOnline 2", "isOnline", 2, 1, true);
        row("missing data list", "downloadMissingData", QStringList{"a"}, 4, false);
        row("timeout garbage", "timeoutSeconds", "soon", 5, 0.0f);
        row("timeout not finite", "timeoutSeconds", "inf", 5, 0.0f);
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
        prefs.setTimeoutOverride(3.0f);
        QCOMPARE(prefs.timeoutSeconds(), 3.0f);
        prefs.savePreferences(settings);
        QCOMPARE(settings.value(u"timeoutSeconds"_s).toFloat(), 60.0f);
        // A value chosen in the panel ends the override.
        prefs.setTimeoutSeconds(30.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 30.0f);
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
        const QString expected = base + u"/Vantorel Data"_s;
        QCOMPARE(AppCore().prepareDataFolder(), expected);
        QVERIFY(QFileInfo(expected).isDir());

        // A folder from the command line is made, however deep.
        const QString deeper = TestEnvironment::home() + u"/elsewhere/deeper"_s;
        AppCore core;
        core.setDataFolderOverride(deeper);
        QCOMPARE(core.prepareDataFolder(), deeper);
        QVERIFY(QFileInfo(deeper).isDir());

        // A plain file where the base should be: nothing is made, the path is used all the same.
        QDir(base).removeRecursively();
        QVERIFY(TestEnvironment::writeFile(base, {}));
        QTest::ignoreMessage(QtWarningMsg, "Can't create Data Folder!");
        const QString path = AppCore().prepareDataFolder();
        QFile::remove(base);
        QCOMPARE(path, expected);
    }

private:
    static QVariantList values(const Preferences &p)
    {
        return QVariantList() << p.lastView() << p.isOnline() << p.logErrorsOnly()
                              << p.beepOnErrors() << p.downloadMissingData() << p.timeoutSeconds()
                              << p.southernHemisphere();
    }
};

VANTOREL_TEST_CORE_MAIN(TestPreferences)
#include "test_preferences.moc"
