#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The names of the eight phase octants ("New Moon" for octant 0 and so on), read from the
// property list "PhaseNames.plist" among the application's resources: a dictionary whose entry
// "PhaseNames" maps the keys "0" to "7" to the names.
class MoonPhaseNames {
public:
    static constexpr const char *kResourceName = "PhaseNames.plist";

    // The eight names in octant order, or none when the file cannot be read or has no
    // "PhaseNames" dictionary. A key that is missing or not text gives an empty name, so that
    // the name of octant i always stands at index i.
    static std::optional<QStringList> load(const QString &path);
    // The names from the application's resources.
    static std::optional<QStringList> loadFromResources();
    // The name at the octant's index, or an empty text.
    static QString nameForPhase(const QStringList &names, int octant);
};
