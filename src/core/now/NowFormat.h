#pragma once

#include "core/now/AuroraGrid.h"
#include "core/now/NowSample.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

// The providers' JSON files, one reader per kind of file (a node's "DataKind"): what shape each
// must have, and the samples it holds.
//
// Providers change their formats without notice, and a tool that reads the old shape from a new
// file silently shows nothing or nonsense. So a downloaded file is first held against its kind's
// shape (shapeProblem), and a file that does not fit never replaces the last good one. The
// readers then apply each file's rules: rows of inactive spacecraft are skipped, −9999 in a
// measured value is a fill value and never a measurement, times without a zone mark are UTC, and
// whatever order a file keeps its rows in, the samples come out oldest first.
class NowFormat {
public:
    // The kinds this version reads: "kp", "kp-forecast", "xray", "solar-wind", "imf", "protons",
    // "scales", "messages", "f107", "ovation".
    static QStringList kinds();
    static bool isKnownKind(const QString &kind);

    // Why the text is not a file of the kind, in a few words ("no "Kp" in the rows"); empty when
    // it is. Quick enough for the main thread on the largest files: the whole text's structure is
    // walked once (so a file cut short is caught), but only the first and the last row are read.
    //
    // On the way it finds, when asked (newestTime), when the file's newest sample was measured:
    // what its data is as recent as. The measured series keep their rows in time order, one way
    // or the other, so the first and the last row tell; a K index forecast counts its observed
    // and estimated rows, not the predicted ones; the scales count today's entry. None for a file
    // without samples, or of the wrong shape.
    static QString shapeProblem(const QString &kind, const QByteArray &json,
                                std::optional<qint64> *newestTime = nullptr);

    // Every sample of a file, oldest first; none, with the reason, when the file does not have
    // its kind's shape. Rows that cannot be read (no time, no value) are left out. The aurora
    // forecast's grid is no series of samples: its file gives two, the "observation" time and the
    // "forecast" time with the grid's highest value (parseOvation() reads the grid).
    static std::optional<NowSamples> parse(const QString &kind, const QByteArray &json,
                                           QString *problem = nullptr);
    // The grid of an "ovation" file; none, with the reason, when the file does not have the shape.
    static std::optional<AuroraGrid> parseOvation(const QByteArray &json,
                                                  QString *problem = nullptr);

    // Seconds since 1970 in UTC for "2026-05-01T12:34:56", "2026-05-01 12:34:56.789", with "Z"
    // or an offset such as "+02:00", or a bare date. A time without a zone mark is UTC.
    static std::optional<qint64> parseTime(const QString &text);
    // The same moment as the providers and `vantorel now` write it: "2026-05-01T12:34:56Z".
    static QString isoTime(qint64 time);

    // What a measured value holds at or below this is a fill value: the instrument gave nothing.
    static constexpr double kFillValue = -9999.0;
};
