#pragma once

#include "core/now/NowSample.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

// Space weather now, from the samples of the providers' files: the planetary K index (observed or
// estimated) and the forecast's highest value for the next day, the X-ray flux and class and the
// day's highest, the solar wind and the interplanetary magnetic field, the ≥10 MeV protons, the
// R, S and G scales with the forecast for the next three days, and the forecasters' messages.
//
// Everything is one JSON object, the one `vantorel now --json` prints; a member whose data is
// missing is null, and a value older than its kind's threshold says it is stale.
class NowSummary {
public:
    // Samples by kind ("kp", "xray", ...), as NowFormat::parse gives them.
    using Data = QHash<QString, NowSamples>;

    // Reads the data files, given as (kind, path) pairs, into samples by kind. A missing file
    // gives nothing; one that cannot be read adds a line to the problems and gives nothing.
    static Data readFiles(const QList<std::pair<QString, QString>> &files, QStringList *problems);

    // The summary as of `now` (seconds since 1970, UTC).
    static QJsonObject summarize(const Data &data, qint64 now);
    // Whether every member has data and none is stale.
    static bool allCurrent(const QJsonObject &summary);
    // The summary as a few aligned lines for a person at a terminal, times in UTC.
    static QString plainText(const QJsonObject &summary);
    // How old a member's value is, as people read it: "12 min old", "stale: 2 h 10 min old".
    static QString ageText(const QJsonObject &member);
    // The forecasters' whole messages, in the order of the summary's "messages" (newest first).
    static QStringList messageTexts(const Data &data);

    // "C2.3": the class letter and the flux in units of the letter's base, cut (not rounded) to
    // one decimal.
    static QString xrayClass(double flux);
    // The G level of a K index: 0 below 5, else floor(Kp) − 4.
    static int gScale(double kp);

    static constexpr qint64 kKpStaleSeconds = 6 * 3600;
    static constexpr qint64 kMinuteDataStaleSeconds = 15 * 60;
};
