#include "TestEnvironment.h"
#include "TestHttpServer.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QtTest>

// "vantorel fetch" from the outside, as a cron job would run it: no display, definition files
// pointing at a loopback server, exit codes, printed entries and the data files it writes.
class TestFetch : public QObject {
    Q_OBJECT

private slots:
    void init();

    void fetchesEverything();
    void failureExitsOne();
    void onlyTheNamedGroups();
    void usageErrors_data();
    void usageErrors();
    void helpAndVersion_data();
    void helpAndVersion();
    void remembersTheLastUpdate();

private:
    struct Result {
        int code = -1;
        QStringList out;
        QStringList err;
    };
    // Runs the command without a display and keeps serving while it runs.
    Result fetch(const QStringList &arguments)
    {
        QProcess process;
        QProcessEnvironment env = TestEnvironment::headlessEnvironment();
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(VANTOREL_BINARY),
                      QStringList{QStringLiteral("fetch")} + arguments);
        if (!process.waitForStarted())
            return {};
        Result result;
        if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 30000)) {
            process.kill();
            process.waitForFinished();
            return result;
        }
        result.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
        const auto lines = [](const QByteArray &bytes) {
            QStringList list = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
            list.removeAll(QString());
            return list;
        };
        result.out = lines(process.readAllStandardOutput());
        result.err = lines(process.readAllStandardError());
        return result;
    }
    void writeDefinitions(bool withFailure)
    {
        const auto node = [this](const QString &dest, const QString &name, const QByteArray &path) {
            return TestEnvironment::nodeDict(dest, name, _server->baseUrl(),
                                             QString::fromLatin1(path));
        };
        const QVariantMap image{
            {"Domain0",
             QVariantMap{{"DomainName", "D"},
                         {"Node0", node("sun1.png", "Sun One", "sun1")},
                         {"Node1", node("sun2.png", "Sun Two", withFailure ? "gone" : "sun2")}}}};
        QVERIFY(TestEnvironment::writePropertyList(_definitions + "/DataSun.plist", image));
        for (const char *group : {"Graphs", "Aurora", "Earth"}) {
            const QString name = QLatin1String(group);
            QVERIFY(TestEnvironment::writePropertyList(
                _definitions + "/Data" + name + ".plist",
                {{"Domain0", QVariantMap{{"DomainName", name},
                                         {"Node0", node(name + ".png", name, "image")}}}}));
        }
        QVERIFY(TestEnvironment::writePropertyList(
            _definitions + "/DataAlerts.plist", {{"Node0", node("RSGA.txt", "RSGA", "report")},
                                                 {"Node1", node("WKHF.txt", "Weekly", "report")}}));
    }
    QStringList common() const
    {
        return {QStringLiteral("--definitions"), _definitions,
                QStringLiteral("--data-dir"),    _data,
                QStringLiteral("--timeout"),     QStringLiteral("5")};
    }

    std::unique_ptr<TestHttpServer> _server;
    QString _definitions;
    QString _data;
};

void TestFetch::init()
{
    TestEnvironment::resetState();
    _server = std::make_unique<TestHttpServer>();
    _server->serve("/sun1", TestHttpServer::picture(100));
    _server->serve("/sun2", TestHttpServer::picture(200));
    _server->serve("/image", TestHttpServer::picture(50000));
    _server->serve("/report", ":Product: Report\n:Issued: 2026 Nov 22\n");
    _definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    // A folder that does not exist yet: fetch makes it.
    _data = TestEnvironment::makeFolder(QStringLiteral("fetched")) + QStringLiteral("/data");
}

void TestFetch::fetchesEverything()
{
    writeDefinitions(false);
    const Result result = fetch(common());
    QCOMPARE(result.code, 0);
    QVERIFY2(result.err.isEmpty(), qPrintable(result.err.join('\n')));
    QCOMPARE(result.out.size(), 7);
    const QRegularExpression line(QStringLiteral(
        "^\\[\\d{4}/\\d\\d/\\d\\d \\d\\d:\\d\\d[AP]M\\] Download of \".+\" Successful$"));
    for (const QString &entry : result.out)
        QVERIFY2(line.match(entry).hasMatch(), qPrintable(entry));
    QCOMPARE(
        result.out.filter(QRegularExpression(QStringLiteral("\"Sun Two\" Successful$"))).size(), 1);
    QFile sun(_data + QStringLiteral("/sun2.png"));
    QVERIFY(sun.open(QIODevice::ReadOnly));
    QCOMPARE(sun.readAll(), TestHttpServer::picture(200));
    QCOMPARE(QFileInfo(_data + QStringLiteral("/Earth.png")).size(), 50000);
    QVERIFY(QFileInfo::exists(_data + QStringLiteral("/WKHF.txt")));
}

void TestFetch::failureExitsOne()
{
    writeDefinitions(true);
    const Result result = fetch(common());
    QCOMPARE(result.code, 1);
    QCOMPARE(result.err.size(), 1);
    QVERIFY(result.err.first().contains(
        QStringLiteral("Download of \"Sun Two\" Failed: The server answered 404 Not Found. ")));
    QVERIFY(result.err.first().endsWith(_server->url("gone")));
    QCOMPARE(result.out.size(), 6); // the others still arrive
}

void TestFetch::onlyTheNamedGroups()
{
    writeDefinitions(true);
    const Result result =
        fetch(common() + QStringList{QStringLiteral("alerts"), QStringLiteral("Earth")});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out.size(), 3);
    QCOMPARE(_server->requestCount("/sun1"), 0);
    QCOMPARE(_server->requestCount("/report"), 2);
}

void TestFetch::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown group") << QStringList{"Jupiter"};
    QTest::newRow("unknown option") << QStringList{"--fast"};
    QTest::newRow("timeout not a number") << QStringList{"--timeout", "soon"};
    QTest::newRow("definitions not a folder") << QStringList{"--definitions", "/nonexistent/x"};
    QTest::newRow("option without value") << QStringList{"--data-dir"};
}

void TestFetch::usageErrors()
{
    QFETCH(QStringList, arguments);
    const Result result = fetch(arguments);
    QCOMPARE(result.code, 2);
    QVERIFY(!result.err.isEmpty());
    QVERIFY(result.out.isEmpty());
}

void TestFetch::helpAndVersion_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("expected");
    QTest::newRow("help") << "--help"
                          << "Groups: Sun, Graphs, Aurora, Earth, Alerts";
    QTest::newRow("version") << "--version"
                             << "vantorel 0.1.0";
}

void TestFetch::helpAndVersion()
{
    QFETCH(QString, option);
    QFETCH(QString, expected);
    const Result result = fetch({option});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.join('\n').contains(expected), qPrintable(result.out.join('\n')));
}

void TestFetch::remembersTheLastUpdate()
{
    writeDefinitions(false);
    QCOMPARE(fetch(common() + QStringList{QStringLiteral("Alerts")}).code, 0);
    QSettings settings;
    settings.sync();
    const QString stored = settings.value(QStringLiteral("lastUpdateForNodeRSGA.txt")).toString();
    QVERIFY2(stored.contains(QStringLiteral(" at ")), qPrintable(stored));
}

VANTOREL_TEST_CORE_MAIN(TestFetch)
#include "test_fetch.moc"
