#include "core/moon/MoonPhaseNames.h"

#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"

std::optional<QStringList> MoonPhaseNames::load(const QString &path)
{
    const std::optional<QVariantMap> root = PropertyList::dictionaryFromFile(path);
    if (!root)
        return std::nullopt;
    const QVariant entry = root->value(QStringLiteral("PhaseNames"));
    if (entry.typeId() != QMetaType::QVariantMap)
        return std::nullopt;

    const QVariantMap dictionary = entry.toMap();
    QStringList names;
    for (int octant = 0; octant < 8; ++octant) {
        const QVariant name = dictionary.value(QString::number(octant));
        names.append(name.typeId() == QMetaType::QString ? name.toString() : QString());
    }
    return names;
}

std::optional<QStringList> MoonPhaseNames::loadFromResources()
{
    return load(ResourceLocator::resourcePath(QLatin1String(kResourceName)));
}

QString MoonPhaseNames::nameForPhase(const QStringList &names, int octant)
{
    return names.value(octant);
}
