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
    void changeEvent(QEvent *event) override;

private:
    enum class Kind { Message, Error };
    void append(const QString &message, Kind kind);
    // The page and the entries' colours for the palette in force: black and red on a white page,
    // or light text and a lighter red on a dark one. Entries already written are recoloured.
    void followAppearance();
    static bool usesDarkPage();
    QColor colour(Kind kind) const;

    QTextEdit *_logField;
    bool _dark = false;
};
