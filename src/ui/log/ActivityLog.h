#pragma once

#include "core/log/LogSink.h"

#include <QWidget>

class QTextEdit;

// The activity-log window: one line per download outcome since the application started, errors
// in red, successes in black. Closing it only hides it; entries keep arriving while it is hidden.
// Nothing is written to disk but the window's frame.
class ActivityLog : public QWidget, public LogSink {
    Q_OBJECT

public:
    explicit ActivityLog(QWidget *parent = nullptr);

    static constexpr const char *kFrameKey = "ActivityLogWindow";

    // Restores the frame saved under "ActivityLogWindow", or centres the window.
    void awakeFromNib();
    void saveWindowFrame();

    void openLogWindow();
    void clearLog();
    void addErrorToLog(const QString &message) override;
    void addMessageToLog(const QString &message) override;

    QTextEdit *logField() const { return _logField; }
    QString text() const;

signals:
    // Emitted whenever an error entry asks for the system beep; tests listen to it.
    void beeped();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void append(const QString &message, const QColor &colour);

    QTextEdit *_logField;
};
