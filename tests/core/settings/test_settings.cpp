#include "TestEnvironment.h"

#include "core/log/LogEntry.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/settings/SettingsStore.h"
#include "core/shell/AppCore.h"
#include "core/sources/UpdateTimeText.h"

#include <QStandardPaths>

// What is kept in the settings and how: the preferences with their keys and damaged values, and
// the texts of update times; the data folder and the log stamp.
class TestSettings : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void defaultsAndKeys()
    {
        QSettings settings;
        Preferences prefs;
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs), QVariantList({0, true, false, false, true, 60.0f, false, 5, "M1", 7,
                                              false, QTime(22, 0)}));
        QVERIFY(settings.allKeys().isEmpty()); // reading registers nothing

        const QStringList keys =
            QStringLiteral("lastView isOnline logErrorsOnly beepOnErrors "
                           "downloadMissingData timeoutSeconds southernHemisphere "
                           "notifyKpThreshold notifyFlareClass notifyMessageFamilies homeLatitude "
                           "homeLongitude quietHoursStart")
                .split(' ');
        const QStringList stored = u"4 0 1 1 0 12.5 1 7 X1 summaries 60.5 -105 23:30"_s.split(' ');
        for (int i = 0; i < keys.size(); ++i)
            settings.setValue(keys[i], stored[i]);
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs), QVariantList({4, false, true, true, false, 12.5f, true, 7, "X1", 8,
                                              true, QTime(23, 30)}));
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
        row("isOnline garbage", "isOnline", "yes", 1, false);
        row("missing data list", "downloadMissingData", QStringList{"a"}, 4, false);
        row("timeout garbage", "timeoutSeconds", "soon", 5, 0.0f);
        row("timeout not finite", "timeoutSeconds", "inf", 5, 0.0f);
        // The notification settings fall back to their defaults instead.
        row("storm threshold not a choice", "notifyKpThreshold", "3", 7, 5);
        row("flare class unknown", "notifyFlareClass", "Z9", 8, "M1");
        row("a family unknown", "notifyMessageFamilies", "warnings storms", 9, 7);
        row("latitude out of range", "homeLatitude", "95", 10, false);
        row("quiet hours garbage", "quietHoursStart", "late", 11, QTime(22, 0));
    }

    void unreadableValues()
    {
        QSettings settings;
        settings.setValue("homeLongitude", "10");
        settings.setValue(fetch<QString>("key"), fetch<QVariant>("stored"));
        Preferences prefs;
        prefs.loadPreferences(settings);
        QCOMPARE(values(prefs).at(fetch<int>("index")), fetch<QVariant>("expected"));
    }

    // A time-out for this run only wins over the stored one until one is chosen in the panel;
    // zero or less, from either, is kept as given but never turns time-outs off.
    void timeouts()
    {
        Preferences prefs;
        prefs.setTimeoutOverride(3.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 3.0f);
        prefs.setTimeoutSeconds(30.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 30.0f);
        prefs.setTimeoutOverride(0.0f);
        QCOMPARE(prefs.timeoutSeconds(), 0.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 60.0f);
        prefs.setTimeoutSeconds(-5.0f);
        QCOMPARE(prefs.transferTimeoutSeconds(), 60.0f);
    }

    // Written with English names whatever the locale; an invalid expected time: refused.
    void storedUpdateTime_data()
    {
        columns<QString, QDateTime>("text", "when");
        const auto at = [](int y, int mo, int d, int h, int mi) {
            return QDateTime(QDate(y, mo, d), QTime(h, mi));
        };
        QTest::newRow("afternoon") << "Monday, Nov 16 2026 at 05:57 PM" << at(2026, 11, 16, 17, 57);
        QTest::newRow("after midnight")
            << "Thursday, Jan 01 2026 at 12:01 AM" << at(2026, 1, 1, 0, 1);
        QTest::newRow("noon") << "Tuesday, Jun 30 2026 at 12:00 PM" << at(2026, 6, 30, 12, 0);
        QTest::newRow("another language") << "Montag, Nov 16 2026 um 05:57 PM" << QDateTime();
        QTest::newRow("hour 13") << "Monday, Nov 16 2026 at 13:57 PM" << QDateTime();
        QTest::newRow("31 November") << "Monday, Nov 31 2026 at 05:57 PM" << QDateTime();
    }

    void storedUpdateTime()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, when);
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(UpdateTimeText::parseLongLastUpdate(text), when);
        if (when.isValid()) // and seconds are not stored
            QCOMPARE(UpdateTimeText::longLastUpdate(when.addSecs(42)), text);
        QLocale::setDefault(saved);
    }

    // Changes reach the file a little later without anyone asking, also once the store has
    // gone quiet after a write: a killed process loses only the last moments.
    void changesReachTheFile()
    {
        for (const QByteArray value : {"first", "second"}) {
            if (value == "second") // the store looks once more, finds nothing, and goes quiet
                QTest::qWait(SettingsStore::kWriteDelayMilliseconds + 500);
            Settings::store().setValue(u"probe"_s, QString::fromLatin1(value));
            QTRY_VERIFY_WITH_TIMEOUT(
                TestEnvironment::readFile(Settings::store().fileName()).contains("probe=" + value),
                10000);
        }
    }

    void dataFolder()
    {
        // A folder from the command line is made, however deep.
        const QString deeper = TestEnvironment::home() + u"/elsewhere/deeper"_s;
        AppCore core;
        core.setDataFolderOverride(deeper);
        QCOMPARE(core.prepareDataFolder(), deeper);
        QVERIFY(QFileInfo(deeper).isDir());
        // A plain file in the way: nothing is made, and the path is used all the same.
        const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        QVERIFY(base.startsWith(TestEnvironment::home()));
        QDir(base).removeRecursively();
        QDir().mkpath(QFileInfo(base).path());
        QVERIFY(TestEnvironment::writeFile(base, {}));
        QTest::ignoreMessage(QtWarningMsg, "Can't create Data Folder!");
        const QString path = AppCore().prepareDataFolder();
        QFile::remove(base);
        QCOMPARE(path, base + u"/Vantorel Data"_s);
    }

    void logEntry()
    {
        // The message is text, not a pattern.
        const QDateTime when(QDate(2006, 3, 14), QTime(21, 5, 59));
        QCOMPARE(LogEntry::text(when, u"Download of \"A\" %1"_s),
                 u"[2006/03/14 09:05PM] Download of \"A\" %1"_s);
    }

private:
    static QVariantList values(const Preferences &p)
    {
        return QVariantList() << p.lastView() << p.isOnline() << p.logErrorsOnly()
                              << p.beepOnErrors() << p.downloadMissingData() << p.timeoutSeconds()
                              << p.southernHemisphere() << p.notifications().kpThreshold
                              << p.notifications().flareClass << p.notifications().families
                              << p.notifications().hasLocation() << p.notifications().quietStart;
    }
};

VANTOREL_TEST_CORE_MAIN(TestSettings)
#include "test_settings.moc"
