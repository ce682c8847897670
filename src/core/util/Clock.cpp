#include "core/util/Clock.h"

QDateTime Clock::now()
{
    const Source &s = source();
    return s ? s() : QDateTime::currentDateTime();
}

void Clock::setSource(Source source)
{
    Clock::source() = std::move(source);
}

Clock::Source &Clock::source()
{
    static Source current;
    return current;
}
