#include "core/shell/ToolbarConfiguration.h"

#include "core/shell/ToolbarItems.h"

#include <QSettings>

QStringList ToolbarConfiguration::load(QSettings &settings)
{
    QStringList cleaned = sanitized(settings.value(QLatin1String(kKey)).toStringList());
    if (cleaned.isEmpty())
        return ToolbarItems::defaultItemIdentifiers();
    QStringList known = settings.value(QLatin1String(kKnownItemsKey)).toStringList();
    if (!settings.contains(QLatin1String(kKnownItemsKey))) {
        // Stored before the known items were: then every item but the Now view existed.
        known = ToolbarItems::allowedItemIdentifiers();
        known.removeAll(QStringLiteral("Now"));
    }
    const QStringList views = ToolbarItems::selectableItemIdentifiers();
    for (qsizetype i = 1; i < views.size(); ++i) {
        if (known.contains(views[i]) || cleaned.contains(views[i]))
            continue;
        const qsizetype before = cleaned.indexOf(views[i - 1]);
        if (before >= 0)
            cleaned.insert(before + 1, views[i]);
    }
    return cleaned;
}

void ToolbarConfiguration::save(QSettings &settings, const QStringList &identifiers)
{
    settings.setValue(QLatin1String(kKey), identifiers);
    settings.setValue(QLatin1String(kKnownItemsKey), ToolbarItems::allowedItemIdentifiers());
}

QStringList ToolbarConfiguration::sanitized(const QStringList &identifiers)
{
    const QStringList allowed = ToolbarItems::allowedItemIdentifiers();
    QStringList result;
    for (const QString &identifier : identifiers) {
        if (!allowed.contains(identifier))
            continue;
        if (!ToolbarItems::isStandard(identifier) && result.contains(identifier))
            continue;
        if (identifier == QLatin1String(ToolbarItems::kCustomize) && result.contains(identifier))
            continue;
        result.append(identifier);
    }
    return result;
}
