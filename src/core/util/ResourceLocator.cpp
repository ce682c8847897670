#include "core/util/ResourceLocator.h"

#include "BuildInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString &resourceOverride()
{
    static QString path;
    return path;
}

QString &definitionsOverride()
{
    static QString path;
    return path;
}

} // namespace

QString ResourceLocator::resourceFolder()
{
    if (!resourceOverride().isEmpty())
        return resourceOverride();
    const QString exeDir = QCoreApplication::applicationDirPath();
    return QDir::cleanPath(exeDir + QStringLiteral("/../") +
                           QLatin1String(BuildInfo::resourceSubdirectory));
}

void ResourceLocator::setResourceFolder(const QString &path)
{
    resourceOverride() = path;
}

void ResourceLocator::setDefinitionsFolder(const QString &path)
{
    definitionsOverride() = path;
}

QString ResourceLocator::definitionsFolder()
{
    return definitionsOverride();
}

QString ResourceLocator::userDefinitionsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
}

QString ResourceLocator::userDefinitionFilePath(const QString &fileName)
{
    for (const QString &folder : {definitionsFolder(), userDefinitionsFolder()}) {
        if (folder.isEmpty())
            continue;
        const QFileInfo candidate(QDir(folder).filePath(fileName));
        if (candidate.exists() || candidate.isSymLink())
            return candidate.filePath();
    }
    return QString();
}

QString ResourceLocator::resourcePath(const QString &fileName)
{
    return resourceFolder() + QLatin1Char('/') + fileName;
}
