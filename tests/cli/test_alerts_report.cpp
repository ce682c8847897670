#include "TestEnvironment.h"

#include "core/sources/Node.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QtTest>

// "vantorel report" from the outside, as a user or a script runs it without a display: which
// bulletin it prints, how, the exit codes and what goes to standard error.
class TestAlertsReport : public QObject {
    Q_OBJECT

private slots:
    void init();

    void printsAFile_data();
    void printsAFile();
    void printsAStoredReport_data();
    void printsAStoredReport();
    void anExistingFileWins();
    void nothingToPrint_data();
    void nothingToPrint();
    void usageErrors_data();
    void usageErrors();
    void listsTheReports();
    void help();

private:
    struct Result {
        int code = -1;
        QByteArray out;
        QByteArray err;
    };
    Result report(const QStringList &arguments, const QString &workingDirectory = {})
    {
        QProcess process;
        QProcessEnvironment env = TestEnvironment::headlessEnvironment();
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(workingDirectory.isEmpty() ? _work : workingDirectory);
        process.start(QStringLiteral(VANTOREL_BINARY),
                      QStringList{QStringLiteral("report")} + arguments);
        if (!process.waitForFinished(30000)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        Result result;
        result.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
        result.out = process.readAllStandardOutput();
        result.err = process.readAllStandardError();
        return result;
    }
    QStringList common() const
    {
        return {QStringLiteral("--definitions"), _definitions, QStringLiteral("--data-dir"), _data};
    }
    static void writeFile(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    QString _definitions;
    QString _data;
    QString _work;
};

void TestAlertsReport::init()
{
    TestEnvironment::resetState();
    _definitions = TestEnvironment::makeFolder(QStringLiteral("definitions"));
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    _work = TestEnvironment::makeFolder(QStringLiteral("work"));
    QVERIFY(TestEnvironment::writePropertyList(
        _definitions + QStringLiteral("/DataAlerts.plist"),
        {{"Node0", TestEnvironment::nodeDict("RSGA.txt", "Daily")},
         {"Node1", TestEnvironment::nodeDict("WKHF.txt", "Weekly")},
         {"Node2", TestEnvironment::nodeDict("Forecast.txt", "Three-day forecast")}}));
}

void TestAlertsReport::printsAFile_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("daily report by its name")
        << "RSGA.txt" << QByteArray(":Product: R\n:Issued: d\nIA. x\x96y") << QStringList()
        << QByteArray("R\nIssued: d\n\n1A. x-y\n");
    QTest::newRow("highlights by their name")
        << "WKHF.txt" << QByteArray("a\nb\n\n# c\n") << QStringList() << QByteArray("a b \nc \n");
    QTest::newRow("name compared exactly")
        << "wkhf.txt" << QByteArray("a\nb\n# c") << QStringList() << QByteArray("a\nb\nc\n");
    QTest::newRow("--as chooses the transformation")
        << "notes.txt" << QByteArray("a\nb") << QStringList{"--as", "WKHF.txt"}
        << QByteArray("a b\n");
    QTest::newRow("--as another name")
        << "RSGA.txt" << QByteArray("x\nIA. y") << QStringList{"--as", "other.txt"}
        << QByteArray("x\nIA. y\n");
    QTest::newRow("printed in UTF-8") << "x.txt" << QByteArray("\xA5 10\xA1 \xDB") << QStringList()
                                      << QByteArray("\xE2\x80\xA2 10\xC2\xB0 \xE2\x82\xAC\n");
    QTest::newRow("UTF-16 file") << "x.txt" << QByteArray("\xFF\xFE\x41\x00\x0A\x00", 6)
                                 << QStringList() << QByteArray("A\n");
    QTest::newRow("CR LF line ends")
        << "x.txt" << QByteArray("a\r\n# b\r\n") << QStringList() << QByteArray("a\nb\n");
}

void TestAlertsReport::printsAFile()
{
    QFETCH(QString, fileName);
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, expected);
    const QString folder = TestEnvironment::makeFolder(QStringLiteral("files"));
    writeFile(folder + QLatin1Char('/') + fileName, bytes);

    // A path as typed, and one relative to the working folder.
    const Result absolute = report(options + QStringList{folder + QLatin1Char('/') + fileName});
    QCOMPARE(absolute.code, 0);
    QCOMPARE(absolute.out, expected);
    QCOMPARE(absolute.err, QByteArray());
    const Result relative = report(options + QStringList{fileName}, folder);
    QCOMPARE(relative.code, 0);
    QCOMPARE(relative.out, expected);
}

void TestAlertsReport::printsAStoredReport_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("data file name") << "RSGA.txt" << QByteArray("Daily\n\n1A. x\n");
    QTest::newRow("data file name, other case") << "rsga.TXT" << QByteArray("Daily\n\n1A. x\n");
    QTest::newRow("title") << "Weekly title" << QByteArray("Weekly x y \n");
    QTest::newRow("title, other case") << "WEEKLY TITLE" << QByteArray("Weekly x y \n");
    QTest::newRow("other report") << "forecast.txt" << QByteArray("Forecast\nIA. x\n");
}

void TestAlertsReport::printsAStoredReport()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, expected);
    writeFile(_data + "/RSGA.txt", ":Product: Daily\nIA. x");
    writeFile(_data + "/WKHF.txt", ":Product: Weekly\nx\ny\n");
    writeFile(_data + "/Forecast.txt", ":Product: Forecast\nIA. x\n");
    const Result result = report(common() + QStringList{name});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, expected);
    QCOMPARE(result.err, QByteArray());
}

void TestAlertsReport::anExistingFileWins()
{
    writeFile(_data + "/RSGA.txt", "stored copy");
    writeFile(_work + "/RSGA.txt", "file in the working folder");
    const Result result = report(common() + QStringList{"RSGA.txt"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("file in the working folder\n"));

    // A folder of that name is not a bulletin: the report is printed.
    QVERIFY(QFile::remove(_work + "/RSGA.txt"));
    QVERIFY(QDir(_work).mkdir(QStringLiteral("RSGA.txt")));
    QCOMPARE(report(common() + QStringList{"RSGA.txt"}).out, QByteArray("stored copy\n"));
}

void TestAlertsReport::nothingToPrint_data()
{
    QTest::addColumn<QByteArray>("stored"); // "none" for no file at all
    QTest::addColumn<bool>("createDataFolder");
    QTest::newRow("no stored file") << QByteArray("none") << true;
    QTest::newRow("zero-byte file") << QByteArray() << true;
    QTest::newRow("data folder missing") << QByteArray("none") << false;
}

void TestAlertsReport::nothingToPrint()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, createDataFolder);
    QString data = _data;
    if (!createDataFolder)
        data += QStringLiteral("/not-there");
    if (stored != "none")
        writeFile(data + "/WKHF.txt", stored);
    const Result result =
        report({"--definitions", _definitions, "--data-dir", data, "Weekly title"});
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err,
             QByteArray("Data not loaded. Press \"Reload\" to download current data.\n"));
    // Reading never creates anything.
    QCOMPARE(QFileInfo::exists(data), createDataFolder);
}

void TestAlertsReport::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("mentions");
    QTest::newRow("no name") << QStringList() << QByteArray("--list");
    QTest::newRow("unknown name") << QStringList{"Jupiter"} << QByteArray("\"Jupiter\"");
    QTest::newRow("two names") << QStringList{"RSGA.txt", "WKHF.txt"} << QByteArray("one");
    QTest::newRow("list with a name") << QStringList{"--list", "RSGA.txt"} << QByteArray("--list");
    QTest::newRow("empty --as") << QStringList{"--as", "", "RSGA.txt"} << QByteArray("--as");
    QTest::newRow("unknown option") << QStringList{"--fast"} << QByteArray("fast");
    QTest::newRow("definitions not a folder")
        << QStringList{"--definitions", "/nonexistent/x", "RSGA.txt"}
        << QByteArray("--definitions");
}

void TestAlertsReport::usageErrors()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, mentions);
    const QStringList options =
        arguments.contains(QStringLiteral("--definitions")) ? arguments : common() + arguments;
    const Result result = report(options);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QVERIFY2(result.err.contains(mentions), result.err.constData());
}

void TestAlertsReport::listsTheReports()
{
    QSettings settings;
    settings.setValue(Node::lastUpdateKey(QStringLiteral("WKHF.txt")),
                      QStringLiteral("Monday, Nov 16 2026 at 05:57 PM"));
    settings.sync();
    const Result result = report(common() + QStringList{"--list"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QByteArray());
    const QStringList lines =
        QString::fromUtf8(result.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 4);
    const QStringList rows[] = {{"Title", "Data file", "Last updated"},
                                {"Daily title", "RSGA.txt", "Unknown"},
                                {"Weekly title", "WKHF.txt", "Monday, Nov 16 2026 at 05:57 PM"},
                                {"Three-day forecast title", "Forecast.txt", "Unknown"}};
    // Every column starts at the same place on every line.
    const qsizetype fileColumn = lines[0].indexOf(QStringLiteral("Data file"));
    const qsizetype updateColumn = lines[0].indexOf(QStringLiteral("Last updated"));
    QVERIFY(fileColumn > 0 && updateColumn > fileColumn);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(lines[i].left(fileColumn).trimmed(), rows[i][0]);
        QCOMPARE(lines[i].mid(fileColumn, updateColumn - fileColumn).trimmed(), rows[i][1]);
        QCOMPARE(lines[i].mid(updateColumn), rows[i][2]);
    }
    // Listing leaves the stored state alone.
    settings.sync();
    QVERIFY(!settings.contains(Node::lastUpdateKey(QStringLiteral("RSGA.txt"))));
}

void TestAlertsReport::help()
{
    const Result result = report({"--help"});
    QCOMPARE(result.code, 0);
    QVERIFY(result.out.startsWith("Usage: vantorel report [options] NAME\n"));
    for (const char *option : {"--list", "--as", "--data-dir", "--definitions", "NAME"})
        QVERIFY2(result.out.contains(option), option);
}

VANTOREL_TEST_CORE_MAIN(TestAlertsReport)
#include "test_alerts_report.moc"
