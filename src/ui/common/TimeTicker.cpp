#include "ui/common/TimeTicker.h"

#include <QCoreApplication>
#include <QTimer>

TimeTicker::TimeTicker(QObject *parent) : QObject(parent), _timer(new QTimer(this))
{
    _timer->setInterval(kIntervalMs);
    connect(_timer, &QTimer::timeout, this, &TimeTicker::ticked);
    _timer->start();
}

TimeTicker *TimeTicker::shared()
{
    // Owned by the application, so that it goes with it.
    static TimeTicker *ticker = new TimeTicker(QCoreApplication::instance());
    return ticker;
}
