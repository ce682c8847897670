#include "core/sources/NodeDefinition.h"

#include <cmath>
#include <limits>

namespace {

QString stringValue(const QVariantMap &dict, const char *key)
{
    const QVariant v = dict.value(QLatin1String(key));
    return v.canConvert<QString>() ? v.toString() : QString();
}

int integerValue(const QVariant &value)
{
    bool ok = false;
    const qlonglong n = value.toLongLong(&ok);
    if (ok)
        return int(std::clamp<qlonglong>(n, std::numeric_limits<int>::min(),
                                         std::numeric_limits<int>::max()));
    const double d = value.toString().trimmed().toDouble(&ok);
    if (ok && std::isfinite(d))
        return int(std::clamp<double>(d, std::numeric_limits<int>::min(),
                                      std::numeric_limits<int>::max()));
    return 0;
}

} // namespace

NodeDefinition::NodeDefinition(const QVariantMap &dict)
    : _dict(dict), _destFileName(stringValue(dict, "DestFileName")),
      _itemName(stringValue(dict, "NodeName")), _nodeTitle(stringValue(dict, "NodeTitle")),
      _itemDescription(stringValue(dict, "Description")),
      _sourceURL(stringValue(dict, "URL") + stringValue(dict, "SourceFileName")),
      _fileType(integerValue(dict.value(QStringLiteral("FileType"))))
{
}

QString NodeDefinition::problem(const QVariantMap &dict)
{
    for (const char *key : {"URL", "SourceFileName", "DestFileName"}) {
        const QVariant v = dict.value(QLatin1String(key));
        if (!v.isValid() || v.typeId() == QMetaType::QVariantMap ||
            v.typeId() == QMetaType::QVariantList)
            return QStringLiteral("no \"%1\"").arg(QLatin1String(key));
    }
    const QString dest = stringValue(dict, "DestFileName");
    if (dest.isEmpty() || dest == QLatin1String(".") || dest == QLatin1String("..") ||
        dest.contains(QLatin1Char('/')) || dest.contains(QLatin1Char('\\')) ||
        dest.contains(QChar(0)))
        return QStringLiteral("\"DestFileName\" is not a plain file name");
    return QString();
}

QString NodeDefinition::pathInFolder(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return QStringLiteral("./") + name;
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

QString NodeDefinition::dataSource() const
{
    return stringValue(_dict, "DataSource");
}

QString NodeDefinition::URL() const
{
    return stringValue(_dict, "URL");
}

QString NodeDefinition::dataKind() const
{
    return stringValue(_dict, "DataKind");
}

NodeSchedule::Defaults NodeDefinition::scheduleDefaults() const
{
    const auto value = [this](const char *key) {
        return integerValue(_dict.value(QLatin1String(key)));
    };
    return {value("AutoUpdate") != 0, value("AutoUpdateRate"), value("DownloadAtStartup") != 0};
}
