#include "../UiFixture.h"

#include "ui/log/ActivityLog.h"

#include <QTextBlock>
#include <QTextEdit>

// The activity log window: entries with their time stamps and colours, the beep, clearing.
class TestActivityLog : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void entries()
    {
        TestEnvironment::setNow(QDateTime(QDate(2006, 3, 14), QTime(21, 5)));
        Preferences::shared().setBeepOnErrors(true);
        ActivityLog log;
        QSignalSpy beeps(&log, &ActivityLog::beeped);
        log.addErrorToLog("bad\nworse");
        log.addMessageToLog("good");
        log.addErrorToLog(QString());
        QCOMPARE(log.text(), "[2006/03/14 09:05PM] bad\nworse\n[2006/03/14 09:05PM] good\n"
                             "[2006/03/14 09:05PM] ");
        // An error is red, all of it, and beeps; a message is black and silent.
        QList<QColor> colours;
        for (QTextBlock line = log.logField()->document()->begin(); line.isValid();
             line = line.next())
            colours << line.begin().fragment().charFormat().foreground().color();
        QCOMPARE(colours, (QList<QColor>{Qt::red, Qt::red, Qt::black, Qt::red}));
        QCOMPARE(beeps.count(), 2);
        Preferences::shared().setBeepOnErrors(false);
        log.addErrorToLog("quiet");
        QCOMPARE(beeps.count(), 2);
        log.clearLog();
        log.addMessageToLog("again");
        QCOMPARE(log.text(), "[2006/03/14 09:05PM] again");
    }
};

VANTOREL_TEST_MAIN(TestActivityLog)
#include "test_activitylog.moc"
