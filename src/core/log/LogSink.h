#pragma once

#include <QString>

// Where download outcomes are reported: the activity-log window in the application, the terminal
// in the headless tools. Every call yields exactly one entry; the sink never edits the message.
class LogSink {
public:
    virtual ~LogSink() = default;
    virtual void addErrorToLog(const QString &message) = 0;
    virtual void addMessageToLog(const QString &message) = 0;
};
