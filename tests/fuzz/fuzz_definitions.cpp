// A whole group definition load on arbitrary file contents: the bytes are written to a file in a
// definitions folder and loaded as the Sun group's and the Alerts group's definition file, nodes
// and all. A user edits these files by hand, so anything may be in them. Besides never crashing,
// a load must succeed exactly when the file holds a dictionary, and every node it makes must keep
// its data file directly inside the data folder, whatever its entry says.
#include "FuzzEnvironment.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/sources/PropertyList.h"
#include "core/util/ResourceLocator.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdlib>

namespace {

QString &definitionsFolder()
{
    static QString folder;
    return folder;
}

QString &dataFolder()
{
    static QString folder;
    return folder;
}

void writeFile(const QString &name, const QByteArray &bytes)
{
    QFile file(definitionsFolder() + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        std::abort();
}

void checkNodes(const QList<Node *> &nodes)
{
    const QString folder = QDir::cleanPath(dataFolder());
    for (const Node *node : nodes) {
        const QFileInfo file(QDir::cleanPath(node->filePath()));
        if (file.path() != folder || file.fileName() != node->fileName())
            std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::setUp();
    definitionsFolder() = FuzzEnvironment::makeFolder(QStringLiteral("definitions"));
    dataFolder() = FuzzEnvironment::makeFolder(QStringLiteral("data"));
    ResourceLocator::setResourceFolder(FuzzEnvironment::makeFolder(QStringLiteral("resources")));
    ResourceLocator::setDefinitionsFolder(definitionsFolder());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    writeFile(QStringLiteral("DataSun.plist"), bytes);
    writeFile(QStringLiteral("DataAlerts.plist"), bytes);
    const std::optional<QVariant> root = PropertyList::fromData(bytes);
    const bool isDictionary = root && root->typeId() == QMetaType::QVariantMap;
    const qsizetype entries = isDictionary ? root->toMap().size() : 0;

    DomainGroup sun;
    const bool sunLoaded = sun.loadDomainDataForGroup(
        QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"), dataFolder());
    if (sunLoaded != isDictionary || sun.domains().size() > entries)
        std::abort();
    checkNodes(sun.allNodes());

    FlatGroup alerts;
    const bool alertsLoaded =
        alerts.loadDictionaryData(QStringLiteral("DataAlerts.plist"), dataFolder());
    if (alertsLoaded != isDictionary || alerts.nodeCount() > entries)
        std::abort();
    checkNodes(alerts.allNodes());
    return 0;
}
