#pragma once

#include "core/log/LogSink.h"

#include <cstdio>

// Prints each entry as the log window would show it: messages on standard output, errors on
// standard error, one line each, flushed at once so a pipe or a cron mail sees them in order. A
// null stream drops its kind of entry.
class ConsoleLogSink : public LogSink {
public:
    explicit ConsoleLogSink(FILE *messages = stdout, FILE *errors = stderr);

    void addErrorToLog(const QString &message) override;
    void addMessageToLog(const QString &message) override;

    int errorCount() const { return _errorCount; }

private:
    void print(FILE *stream, const QString &message);

    FILE *_messages;
    FILE *_errors;
    int _errorCount = 0;
};
