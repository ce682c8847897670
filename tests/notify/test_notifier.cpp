#include "TestEnvironment.h"

#include "notify/DesktopNotifier.h"

#include <QDBusConnection>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

// What a notification service receives, on a session bus of the test's own: no desktop needed,
// and the user's own notifications are never touched.
class FakeNotifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    // "summary|body|application|icon|actions|desktop entry" per call.
    QStringList calls;

public slots:
    uint Notify(const QString &application, uint, const QString &icon, const QString &summary,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int)
    {
        calls << QStringList{summary,           body,
                             application,       icon,
                             actions.join(','), hints.value("desktop-entry").toString()}
                     .join('|');
        return uint(calls.size());
    }

signals:
    void ActionInvoked(uint id, const QString &action);
};

class TestNotifier : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void delivery();

private:
    QProcess _bus;
    QString _address;
};

void TestNotifier::initTestCase()
{
    const QString program = QStandardPaths::findExecutable("dbus-daemon");
    if (program.isEmpty())
        QSKIP("dbus-daemon is not installed (Debian package dbus-daemon): no session bus to test "
              "the notifications on");
    _bus.start(program, {"--session", "--nofork", "--print-address=1",
                         "--address=unix:path=" + TestEnvironment::home() + "/bus"});
    QVERIFY(_bus.waitForReadyRead(10000));
    _address = QString::fromUtf8(_bus.readLine()).trimmed();
    QVERIFY(!_address.isEmpty());
}

void TestNotifier::cleanupTestCase()
{
    for (const char *name : {"notifier", "service"})
        QDBusConnection::disconnectFromBus(name);
    _bus.terminate();
    _bus.waitForFinished();
}

void TestNotifier::delivery()
{
    DesktopNotifier notifier(QDBusConnection::connectToBus(_address, "notifier"));
    QSignalSpy undelivered(&notifier, &DesktopNotifier::undelivered);
    QSignalSpy activated(&notifier, &DesktopNotifier::activated);
    // Nobody serves notifications yet: the event is handed back for another way to show it.
    notifier.notify("Solar flare: M1.2", "detail");
    QVERIFY(undelivered.wait());
    QCOMPARE(undelivered.first().value(0).toString(), "Solar flare: M1.2");

    QDBusConnection service = QDBusConnection::connectToBus(_address, "service");
    FakeNotifications fake;
    QVERIFY(service.registerObject("/org/freedesktop/Notifications", &fake,
                                   QDBusConnection::ExportAllSlots |
                                       QDBusConnection::ExportAllSignals));
    QVERIFY(service.registerService("org.freedesktop.Notifications"));
    notifier.deliver({{"kp", 0, "Geomagnetic storm: Kp 6 (G2)", "The K index reached 6.", false},
                      {"message", 3600, "WARNING: K-index of 4", "Warning WARK04.", true},
                      {"flare", 7200, "Solar flare: M2.0", "The flux reached M2.0.", true}});
    QTRY_COMPARE(fake.calls.size(), 2);
    QCOMPARE(fake.calls[0], "Geomagnetic storm: Kp 6 (G2)|The K index reached 6.|Vantorel|"
                            "org.example.Vantorel|default,Show|org.example.Vantorel");
    // The events held through the quiet hours, as one.
    QCOMPARE(fake.calls[1].section('|', 0, 1), "2 events during the quiet hours|"
                                               "01:00 UTC WARNING: K-index of 4\n"
                                               "02:00 UTC Solar flare: M2.0");
    // A click on another program's notification is not ours; one on ours is.
    emit fake.ActionInvoked(99, "default");
    emit fake.ActionInvoked(1, "default");
    QTRY_COMPARE(activated.size(), 1);
    QTest::qWait(100);
    QCOMPARE(activated.size(), 1);
    QCOMPARE(undelivered.size(), 1);
}

VANTOREL_TEST_CORE_MAIN(TestNotifier)
#include "test_notifier.moc"
