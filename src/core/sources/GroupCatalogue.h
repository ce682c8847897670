#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The views the toolbar switches between and the data groups behind them, written down once:
// everything that walks the groups (loading, the global commands, the toolbar, the command line)
// reads this table. A new group is one more row here, plus the view that shows it.
class GroupCatalogue {
public:
    // The view numbers. They are stored ("lastView") and order the toolbar, so they never change
    // meaning; the image groups' group numbers are the same numbers.
    enum Number { Sun = 0, Graphs = 1, Aurora = 2, Earth = 3, Alerts = 4, Moon = 5, Now = 6 };

    // How a group's definition file is laid out.
    enum class Layout {
        Domains, // named domains of nodes, shown as an outline (the image groups)
        Flat,    // one list of nodes (the bulletins)
        None,    // no definition file: a view with nothing to download
    };

    // The three pictures an image group shows while it has no picture of its own to show.
    struct Placeholders {
        QString splash;
        QString noData;
        QString downloading;
    };

    struct Group {
        int number;
        // The toolbar item's identifier and label, the prefix of the view's layout settings and
        // the name the command line accepts.
        QString name;
        // Among the application's resources, or the user's own (see ResourceLocator).
        QString definitionFile;
        Layout layout;
        Placeholders placeholders;
        // Where the group comes in the global commands (start-up downloads, scheduled updates,
        // cancel all, empty the cache); "update all" goes in view order. -1 without data.
        int commandOrder;
    };

    // Every view, in view-number order.
    static const QList<Group> &groups();
    // The groups that download (a definition file of their own), in view order.
    static QList<Group> dataGroups();
    // The same, in the order of the global commands.
    static QList<Group> dataGroupsInCommandOrder();
    // None for a number without a view.
    static const Group *group(int number);
    // Ignoring case; none for an unknown name.
    static const Group *groupNamed(const QString &name);
    static QStringList dataGroupNames();
};
