#pragma once

#include "core/log/LogSink.h"

#include <QStringList>

// A log that keeps its entries as "error: ..." and "message: ..." lines, in order.
class RecordingLog : public LogSink {
public:
    QStringList entries;
    void addErrorToLog(const QString &message) override { entries << "error: " + message; }
    void addMessageToLog(const QString &message) override { entries << "message: " + message; }
};
