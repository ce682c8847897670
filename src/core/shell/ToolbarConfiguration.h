#pragma once

#include <QStringList>

class QSettings;

// The user's arrangement of the main window's toolbar, kept in the settings under "toolbar". What
// is read back is cleaned: unknown items are dropped, each real item appears once (separators and
// spaces may repeat), and an arrangement with nothing usable left (or none at all) gives the
// default set.
//
// A view added in a later version joins an arrangement stored before it existed, right after the
// view that comes before it, if the user kept that one: otherwise someone who once arranged the
// toolbar would never see the new view there. Which items the arrangement's owner has seen is
// stored with it, so that a view the user took out stays out.
class ToolbarConfiguration {
public:
    static constexpr const char *kKey = "toolbar";
    static constexpr const char *kKnownItemsKey = "toolbarKnownItems";

    static QStringList load(QSettings &settings);
    static void save(QSettings &settings, const QStringList &identifiers);
    static QStringList sanitized(const QStringList &identifiers);
};
