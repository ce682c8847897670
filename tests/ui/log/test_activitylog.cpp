#include "TestEnvironment.h"

#include "core/settings/Preferences.h"
#include "ui/log/ActivityLog.h"

#include <QApplication>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QTextBlock>
#include <QTextEdit>
#include <QtTest>

// The activity log window: line separators, colours, the beep rule, clearing, hidden logging and
// the saved frame.
class TestActivityLog : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void separatorsAndStamps();
    void coloursPerKind();
    void beepRule_data();
    void beepRule();
    void clearStartsAgain();
    void hiddenWindowKeepsLogging();
    void endAlwaysInView();
    void frameSavedByName();
};

namespace {

QColor colourOfLine(QTextEdit *field, int line)
{
    const QTextBlock block = field->document()->findBlockByNumber(line);
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        if (it.fragment().length() > 0 && !it.fragment().text().trimmed().isEmpty())
            return it.fragment().charFormat().foreground().color();
    }
    return QColor();
}

} // namespace

void TestActivityLog::separatorsAndStamps()
{
    TestEnvironment::setNow(QDateTime(QDate(2006, 3, 14), QTime(21, 5)));
    ActivityLog log;
    log.addMessageToLog(QStringLiteral("first"));
    QCOMPARE(log.text(), QStringLiteral("[2006/03/14 09:05PM] first"));
    log.addErrorToLog(QString());
    log.addMessageToLog(QStringLiteral("two\nlines"));
    QCOMPARE(log.text(), QStringLiteral("[2006/03/14 09:05PM] first\n[2006/03/14 09:05PM] \n"
                                        "[2006/03/14 09:05PM] two\nlines"));
}

void TestActivityLog::coloursPerKind()
{
    ActivityLog log;
    log.addErrorToLog(QStringLiteral("bad\nworse"));
    log.addMessageToLog(QStringLiteral("good"));
    QCOMPARE(colourOfLine(log.logField(), 0), QColor(Qt::red));
    QCOMPARE(colourOfLine(log.logField(), 1), QColor(Qt::red)); // the whole entry is red
    QCOMPARE(colourOfLine(log.logField(), 2), QColor(Qt::black));
}

void TestActivityLog::beepRule_data()
{
    QTest::addColumn<bool>("beepOn");
    QTest::addColumn<int>("beeps");
    QTest::newRow("on: every error beeps, messages never") << true << 3;
    QTest::newRow("off: silence") << false << 0;
}

void TestActivityLog::beepRule()
{
    QFETCH(bool, beepOn);
    QFETCH(int, beeps);
    Preferences::shared().setBeepOnErrors(beepOn);
    ActivityLog log;
    QSignalSpy spy(&log, &ActivityLog::beeped);
    log.addErrorToLog(QStringLiteral("a"));
    log.addErrorToLog(QStringLiteral("b"));
    log.addMessageToLog(QStringLiteral("c"));
    log.addErrorToLog(QStringLiteral("d"));
    QCOMPARE(spy.count(), beeps);
}

void TestActivityLog::clearStartsAgain()
{
    ActivityLog log;
    log.addMessageToLog(QStringLiteral("one"));
    log.clearLog();
    QCOMPARE(log.text(), QString());
    log.addMessageToLog(QStringLiteral("two"));
    QVERIFY(!log.text().startsWith(QLatin1Char('\n')));
    QVERIFY(log.text().endsWith(QStringLiteral("] two")));
}

void TestActivityLog::hiddenWindowKeepsLogging()
{
    ActivityLog log;
    log.openLogWindow();
    log.close();
    QVERIFY(!log.isVisible());
    log.addMessageToLog(QStringLiteral("while hidden 1"));
    log.addErrorToLog(QStringLiteral("while hidden 2"));
    log.openLogWindow();
    QVERIFY(log.isVisible());
    const QStringList lines = log.text().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines[0].endsWith(QStringLiteral("while hidden 1")));
    QVERIFY(lines[1].endsWith(QStringLiteral("while hidden 2")));
}

void TestActivityLog::endAlwaysInView()
{
    ActivityLog log;
    log.resize(300, 120);
    log.show();
    for (int i = 0; i < 200; ++i)
        log.addMessageToLog(QStringLiteral("line %1").arg(i));
    QScrollBar *bar = log.logField()->verticalScrollBar();
    bar->setValue(0); // the user scrolls up
    log.addErrorToLog(QStringLiteral("newest"));
    QCOMPARE(bar->value(), bar->maximum());
    QCOMPARE(log.logField()->textCursor().position(), log.text().size());
}

void TestActivityLog::frameSavedByName()
{
    {
        ActivityLog log;
        log.awakeFromNib();
        log.setGeometry(40, 50, 420, 260);
        log.saveWindowFrame();
    }
    QVERIFY(QSettings().contains(QStringLiteral("ActivityLogWindow")));
    ActivityLog again;
    again.awakeFromNib();
    QCOMPARE(again.size(), QSize(420, 260));
}

VANTOREL_TEST_MAIN(TestActivityLog)
#include "test_activitylog.moc"
