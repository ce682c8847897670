#include "core/shell/ToolbarItems.h"

const QList<ToolbarItems::Item> &ToolbarItems::items()
{
    static const QList<Item> table = {
        {"Sun", "ToolbarSun", "Sun", "Sun"},
        {"Graphs", "ToolbarGraphs", "Graphs", "Graphs"},
        {"Aurora", "ToolbarAurora", "Aurora", "Aurora"},
        {"Earth", "ToolbarEarth", "Earth", "Earth"},
        {"Alerts", "ToolbarAlerts", "Alerts", "Alerts"},
        {"Moon", "ToolbarMoon", "Moon", "Moon"},
        {"Update", "ToolbarUpdate", "Update", "Update All Data"},
        {"Cancel", "ToolbarCancelAll", "Cancel", "Cancel All Downloads"},
        {"Online", "ToolbarOnline", "Go Online", "Go Online"},
        {"Offline", "ToolbarOffline", "Go Offline", "Go Offline"},
        {"Prefs", "ToolbarPrefs", "Preferences", "Preferences"},
    };
    return table;
}

std::optional<ToolbarItems::Item> ToolbarItems::item(const QString &identifier)
{
    for (const Item &entry : items()) {
        if (entry.identifier == identifier)
            return entry;
    }
    return std::nullopt;
}

bool ToolbarItems::isStandard(const QString &identifier)
{
    return identifier == QLatin1String(kSeparator) || identifier == QLatin1String(kSpace) ||
           identifier == QLatin1String(kFlexibleSpace) || identifier == QLatin1String(kCustomize);
}

QStringList ToolbarItems::defaultItemIdentifiers()
{
    return {"Sun",          "Graphs", "Aurora",  "Earth",    "Alerts",  "Moon",
            kFlexibleSpace, "Online", "Offline", kSeparator, kCustomize};
}

QStringList ToolbarItems::allowedItemIdentifiers()
{
    return {"Sun",   "Graphs",   "Aurora", "Earth",        "Alerts",
            "Moon",  "Update",   "Cancel", "Online",       "Offline",
            "Prefs", kSeparator, kSpace,   kFlexibleSpace, kCustomize};
}

QStringList ToolbarItems::selectableItemIdentifiers()
{
    return {"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon"};
}

bool ToolbarItems::isEnabled(const QString &identifier, bool online)
{
    if (identifier == QLatin1String("Online"))
        return !online;
    if (identifier == QLatin1String("Offline") || identifier == QLatin1String("Update"))
        return online;
    return true;
}

int ToolbarItems::viewNumberForIdentifier(const QString &identifier)
{
    return int(selectableItemIdentifiers().indexOf(identifier));
}

QString ToolbarItems::identifierForViewNumber(int viewNumber)
{
    const QStringList selectable = selectableItemIdentifiers();
    if (viewNumber < 0 || viewNumber >= selectable.size())
        return selectable.first();
    return selectable.at(viewNumber);
}
