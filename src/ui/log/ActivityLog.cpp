#include "ui/log/ActivityLog.h"

#include "core/log/LogEntry.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/util/Clock.h"
#include "core/util/DisplayTime.h"
#include "ui/common/WindowAppearance.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QStyle>
#include <QTextBlock>
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
    // The entries are black and red by design, on the light page they were made for, which
    // keeps them readable under a dark desktop theme; our own dark appearance has a page of its
    // own.
    _dark = !usesDarkPage();
    followAppearance();

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
    append(message, Kind::Error);
}

void ActivityLog::addMessageToLog(const QString &message)
{
    append(message, Kind::Message);
}

QColor ActivityLog::colour(Kind kind) const
{
    if (kind == Kind::Error)
        return WindowAppearance::errorColour(_dark);
    return _dark ? WindowAppearance::darkPalette().color(QPalette::Text) : QColor(Qt::black);
}

void ActivityLog::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // The window's palette follows the application's: a new one means a new appearance.
    if (event->type() == QEvent::PaletteChange)
        followAppearance();
}

bool ActivityLog::usesDarkPage()
{
    // Only our own dark palette darkens the page: a dark desktop keeps the light one.
    return QApplication::palette().color(QPalette::Window) ==
           WindowAppearance::darkPalette().color(QPalette::Window);
}

void ActivityLog::followAppearance()
{
    const bool dark = usesDarkPage();
    if (dark == _dark)
        return;
    const QColor oldColours[] = {colour(Kind::Message), colour(Kind::Error)};
    _dark = dark;
    QPalette page = _logField->palette();
    page.setColor(QPalette::Base,
                  dark ? WindowAppearance::darkPalette().color(QPalette::Base) : QColor(Qt::white));
    page.setColor(QPalette::Text, colour(Kind::Message));
    _logField->setPalette(page);

    // A user's choice, and rare: one pass over the entries, then each run in its new colour
    // (runs are found first: recolouring one splits and merges the runs around it).
    struct Run {
        int position, length;
        Kind kind;
    };
    QList<Run> runs;
    for (QTextBlock line = _logField->document()->begin(); line.isValid(); line = line.next()) {
        for (auto it = line.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const QColor was = fragment.charFormat().foreground().color();
            if (was == oldColours[0] || was == oldColours[1])
                runs.append({fragment.position(), fragment.length(),
                             was == oldColours[1] ? Kind::Error : Kind::Message});
        }
    }
    QTextCursor cursor(_logField->document());
    for (const Run &run : std::as_const(runs)) {
        cursor.setPosition(run.position);
        cursor.setPosition(run.position + run.length, QTextCursor::KeepAnchor);
        QTextCharFormat recoloured;
        recoloured.setForeground(colour(run.kind));
        cursor.mergeCharFormat(recoloured);
    }
}

QString ActivityLog::text() const
{
    return _logField->toPlainText();
}

void ActivityLog::append(const QString &message, Kind kind)
{
    QTextCharFormat style;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPointSizeF(9.0);
    style.setFont(font);
    style.setForeground(colour(kind));

    QTextDocument *document = _logField->document();
    QTextCursor cursor(document);
    cursor.movePosition(QTextCursor::End);
    // characterCount() counts the document's closing paragraph mark as well.
    const qsizetype length = document->characterCount() - 1;
    const QString separator = LogEntry::separatorBefore(length);
    if (!separator.isEmpty())
        cursor.insertText(separator, QTextCharFormat());
    cursor.insertText(LogEntry::text(DisplayTime::shown(Clock::now()), message), style);

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
