#include "ui/log/ActivityLog.h"

#include "core/log/LogEntry.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/util/Clock.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QStyle>
#include <QTextCursor>
#include <QTextEdit>
#include <QVBoxLayout>

ActivityLog::ActivityLog(QWidget *parent) : QWidget(parent, Qt::Window), _logField(new QTextEdit)
{
    setWindowTitle(tr("Activity Log"));
    setObjectName(QStringLiteral("ActivityLogWindow"));
    resize(560, 300);

    _logField->setReadOnly(true);
    _logField->setUndoRedoEnabled(false);
    _logField->setLineWrapMode(QTextEdit::WidgetWidth);
    // The entries are black and red by design; give them the light page they were made for so
    // they stay readable under a dark desktop theme.
    QPalette page = _logField->palette();
    page.setColor(QPalette::Base, Qt::white);
    page.setColor(QPalette::Text, Qt::black);
    _logField->setPalette(page);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_logField);
}

void ActivityLog::awakeFromNib()
{
    const QByteArray frame = Settings::store().value(QLatin1String(kFrameKey)).toByteArray();
    if (frame.isEmpty() || !restoreGeometry(frame)) {
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size(),
                                            screen->availableGeometry()));
    }
}

void ActivityLog::saveWindowFrame()
{
    Settings::store().setValue(QLatin1String(kFrameKey), saveGeometry());
}

void ActivityLog::openLogWindow()
{
    show();
    raise();
    activateWindow();
    repaint();
}

void ActivityLog::clearLog()
{
    _logField->clear();
}

void ActivityLog::addErrorToLog(const QString &message)
{
    if (Preferences::shared().beepOnErrors()) {
        QApplication::beep();
        emit beeped();
    }
    append(message, Qt::red);
}

void ActivityLog::addMessageToLog(const QString &message)
{
    append(message, Qt::black);
}

QString ActivityLog::text() const
{
    return _logField->toPlainText();
}

void ActivityLog::append(const QString &message, const QColor &colour)
{
    QTextCharFormat style;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPointSizeF(9.0);
    style.setFont(font);
    style.setForeground(colour);

    QTextDocument *document = _logField->document();
    QTextCursor cursor(document);
    cursor.movePosition(QTextCursor::End);
    // characterCount() counts the document's closing paragraph mark as well.
    const qsizetype length = document->characterCount() - 1;
    const QString separator = LogEntry::separatorBefore(length);
    if (!separator.isEmpty())
        cursor.insertText(separator, QTextCharFormat());
    cursor.insertText(LogEntry::text(Clock::now(), message), style);

    _logField->setTextCursor(cursor);
    _logField->ensureCursorVisible();
    // Show the very end, bottom margin included, even if the user had scrolled up.
    if (QScrollBar *bar = _logField->verticalScrollBar())
        bar->setValue(bar->maximum());
}

void ActivityLog::closeEvent(QCloseEvent *event)
{
    event->accept();
}
