#pragma once

#include <QList>
#include <QString>

#include <cmath>

// One measurement read from a provider's JSON file: which kind of file it came from (the node's
// "DataKind"), which series of that kind ("kp", "speed", "0.1-0.8nm", ...), when (seconds since
// 1970 in UTC) and its value. Text carries what the row says besides its number: the satellite or
// spacecraft, the K index row's status ("observed", "estimated", "predicted"), the scales entry
// ("0" is today), a forecaster's whole message. A missing value (null, or a fill value) is NaN.
struct NowSample {
    QString series;
    qint64 time = 0;
    double value = std::nan("");
    QString text;

    bool hasValue() const { return !std::isnan(value); }
};

using NowSamples = QList<NowSample>;
