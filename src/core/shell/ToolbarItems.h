#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The main window's toolbar as data: its items, the sets that make up the default and the allowed
// configurations, which items can be shown as selected, and when each item is enabled.
class ToolbarItems {
public:
    struct Item {
        QString identifier;
        QString image;
        QString label;
        QString paletteLabel;
    };

    // The standard items that every toolbar offers.
    static constexpr const char *kSeparator = "NSToolbarSeparatorItem";
    static constexpr const char *kSpace = "NSToolbarSpaceItem";
    static constexpr const char *kFlexibleSpace = "NSToolbarFlexibleSpaceItem";
    static constexpr const char *kCustomize = "NSToolbarCustomizeToolbarItem";

    static const QList<Item> &items();
    static std::optional<Item> item(const QString &identifier);
    static bool isStandard(const QString &identifier);

    static QStringList defaultItemIdentifiers();
    static QStringList allowedItemIdentifiers();
    // The items that show a view, one per view in view order (see GroupCatalogue).
    static QStringList selectableItemIdentifiers();

    // "Online" only while offline; "Offline" and "Update" only while online; all others always.
    static bool isEnabled(const QString &identifier, bool online);

    // The view number an item shows (0 to 6), or -1 for an item that shows no view.
    static int viewNumberForIdentifier(const QString &identifier);
    // The item marked as selected for a view number; unknown numbers mark the first view's.
    static QString identifierForViewNumber(int viewNumber);
};
