#include "core/shell/ToolbarConfiguration.h"

#include "core/shell/ToolbarItems.h"

#include <QSettings>

QStringList ToolbarConfiguration::load(QSettings &settings)
{
    const QStringList cleaned = sanitized(settings.value(QLatin1String(kKey)).toStringList());
    return cleaned.isEmpty() ? ToolbarItems::defaultItemIdentifiers() : cleaned;
}

void ToolbarConfiguration::save(QSettings &settings, const QStringList &identifiers)
{
    settings.setValue(QLatin1String(kKey), identifiers);
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
