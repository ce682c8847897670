#pragma once

#include <QStringList>

class QSettings;

// The user's arrangement of the main window's toolbar, kept in the settings under "toolbar". What
// is read back is cleaned: unknown items are dropped, each real item appears once (separators and
// spaces may repeat), and an arrangement with nothing usable left (or none at all) gives the
// default set.
class ToolbarConfiguration {
public:
    static constexpr const char *kKey = "toolbar";

    static QStringList load(QSettings &settings);
    static void save(QSettings &settings, const QStringList &identifiers);
    static QStringList sanitized(const QStringList &identifiers);
};
