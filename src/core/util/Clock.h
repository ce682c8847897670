#pragma once

#include <QDateTime>

#include <functional>

// The one source of "now" for everything that schedules or stamps. Tests replace it so that
// schedules can be exercised without waiting.
class Clock {
public:
    using Source = std::function<QDateTime()>;

    // The present moment in local time.
    static QDateTime now();

    // Replaces the source of now; an empty source restores the system clock.
    static void setSource(Source source);

private:
    static Source &source();
};
