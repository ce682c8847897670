#pragma once

#include "core/sources/NodeSchedule.h"

#include <QString>
#include <QVariantMap>

// What a node was made from: one entry of a group definition file. The values a node needs all
// the time are read once; "DataSource" and "URL" are looked up in the kept entry when asked for.
class NodeDefinition {
public:
    // The caller has made sure that problem() has nothing against the entry.
    explicit NodeDefinition(const QVariantMap &dict);

    // Whether an entry can make a node: "URL", "SourceFileName" and "DestFileName" present and
    // "DestFileName" a single plain file name, so that no entry can write outside the data
    // folder. Empty when it can, otherwise the reason in a few words.
    static QString problem(const QVariantMap &dict);

    // A file directly inside a folder. Unlike QDir::filePath, a name that Qt would read as a
    // resource path (":name") or as absolute stays a name inside the folder.
    static QString pathInFolder(const QString &folder, const QString &name);

    QString destFileName() const { return _destFileName; }
    QString itemName() const { return _itemName; }
    QString nodeTitle() const { return _nodeTitle; }
    QString itemDescription() const { return _itemDescription; }
    // "URL" followed directly by "SourceFileName", as written: no separator is added.
    QString sourceURL() const { return _sourceURL; }
    // "FileType", as a number or as decimal text; 0 (a picture) when absent or neither.
    int fileType() const { return _fileType; }
    QString dataSource() const;
    QString URL() const;
    // "DataKind": how a provider's data file is read (core/now); empty for pictures and reports.
    QString dataKind() const;
    // "AutoUpdate", "AutoUpdateRate" and "DownloadAtStartup": the schedule a node starts with.
    NodeSchedule::Defaults scheduleDefaults() const;

private:
    QVariantMap _dict;
    QString _destFileName;
    QString _itemName;
    QString _nodeTitle;
    QString _itemDescription;
    QString _sourceURL;
    int _fileType = 0;
};
