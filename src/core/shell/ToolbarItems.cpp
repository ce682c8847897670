#include "core/shell/ToolbarItems.h"

#include "core/sources/GroupCatalogue.h"

const QList<ToolbarItems::Item> &ToolbarItems::items()
{
    static const QList<Item> table = [] {
        // First one item per view, in view order, named after it, with the image "Toolbar" and
        // its name; then the commands.
        QList<Item> items;
        for (const GroupCatalogue::Group &group : GroupCatalogue::groups())
            items.append(
                {group.name, QStringLiteral("Toolbar") + group.name, group.name, group.name});
        items.append({
            {"Update", "ToolbarUpdate", "Update", "Update All Data"},
            {"Cancel", "ToolbarCancelAll", "Cancel", "Cancel All Downloads"},
            {"Online", "ToolbarOnline", "Go Online", "Go Online"},
            {"Offline", "ToolbarOffline", "Go Offline", "Go Offline"},
            {"Prefs", "ToolbarPrefs", "Preferences", "Preferences"},
        });
        return items;
    }();
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
    return selectableItemIdentifiers() +
           QStringList{kFlexibleSpace, "Online", "Offline", kSeparator, kCustomize};
}

QStringList ToolbarItems::allowedItemIdentifiers()
{
    return selectableItemIdentifiers() + QStringList{"Update",  "Cancel",       "Online",
                                                     "Offline", "Prefs",        kSeparator,
                                                     kSpace,    kFlexibleSpace, kCustomize};
}

QStringList ToolbarItems::selectableItemIdentifiers()
{
    QStringList identifiers;
    for (const GroupCatalogue::Group &group : GroupCatalogue::groups())
        identifiers.append(group.name);
    return identifiers;
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
