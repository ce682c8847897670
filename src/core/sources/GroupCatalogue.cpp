#include "core/sources/GroupCatalogue.h"

#include <algorithm>

const QList<GroupCatalogue::Group> &GroupCatalogue::groups()
{
    // Sun and Graphs share the solar placeholders.
    static const QList<Group> table = {
        {Sun,
         QStringLiteral("Sun"),
         QStringLiteral("DataSun.plist"),
         Layout::Domains,
         {QStringLiteral("SplashSolar"), QStringLiteral("DataNotLoadedSolar"),
          QStringLiteral("DownloadingDataSolar")},
         0},
        {Graphs,
         QStringLiteral("Graphs"),
         QStringLiteral("DataGraphs.plist"),
         Layout::Domains,
         {QStringLiteral("SplashSolar"), QStringLiteral("DataNotLoadedSolar"),
          QStringLiteral("DownloadingDataSolar")},
         2},
        {Aurora,
         QStringLiteral("Aurora"),
         QStringLiteral("DataAurora.plist"),
         Layout::Domains,
         {QStringLiteral("SplashAurora"), QStringLiteral("DataNotLoadedAurora"),
          QStringLiteral("DownloadingDataAurora")},
         1},
        {Earth,
         QStringLiteral("Earth"),
         QStringLiteral("DataEarth.plist"),
         Layout::Domains,
         {QStringLiteral("SplashEarth"), QStringLiteral("DataNotLoadedEarth"),
          QStringLiteral("DownloadingDataEarth")},
         3},
        {Alerts, QStringLiteral("Alerts"), QStringLiteral("DataAlerts.plist"), Layout::Flat, {}, 4},
        {Moon, QStringLiteral("Moon"), QString(), Layout::None, {}, -1},
        {Now, QStringLiteral("Now"), QStringLiteral("DataNow.plist"), Layout::Flat, {}, 5},
    };
    return table;
}

QList<GroupCatalogue::Group> GroupCatalogue::dataGroups()
{
    QList<Group> result;
    for (const Group &group : groups()) {
        if (group.layout != Layout::None)
            result.append(group);
    }
    return result;
}

QList<GroupCatalogue::Group> GroupCatalogue::dataGroupsInCommandOrder()
{
    QList<Group> result = dataGroups();
    std::stable_sort(result.begin(), result.end(), [](const Group &a, const Group &b) {
        return a.commandOrder < b.commandOrder;
    });
    return result;
}

const GroupCatalogue::Group *GroupCatalogue::group(int number)
{
    for (const Group &group : groups()) {
        if (group.number == number)
            return &group;
    }
    return nullptr;
}

const GroupCatalogue::Group *GroupCatalogue::groupNamed(const QString &name)
{
    for (const Group &group : groups()) {
        if (group.name.compare(name, Qt::CaseInsensitive) == 0)
            return &group;
    }
    return nullptr;
}

QStringList GroupCatalogue::dataGroupNames()
{
    QStringList names;
    for (const Group &group : dataGroups())
        names.append(group.name);
    return names;
}
