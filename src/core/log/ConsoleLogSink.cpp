#include "core/log/ConsoleLogSink.h"

#include "core/log/LogEntry.h"
#include "core/util/Clock.h"

ConsoleLogSink::ConsoleLogSink(FILE *messages, FILE *errors) : _messages(messages), _errors(errors)
{
}

void ConsoleLogSink::addErrorToLog(const QString &message)
{
    ++_errorCount;
    print(_errors, message);
}

void ConsoleLogSink::addMessageToLog(const QString &message)
{
    print(_messages, message);
}

void ConsoleLogSink::print(FILE *stream, const QString &message)
{
    if (!stream)
        return;
    const QByteArray line = LogEntry::text(Clock::now(), message).toUtf8() + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stream);
    std::fflush(stream);
}
