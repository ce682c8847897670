#pragma once

#include <QString>
#include <QVariant>

#include <optional>

// Reads property lists, XML or binary, into Qt values: dictionaries become QVariantMap, arrays
// QVariantList, strings QString, integers qint64, reals double, booleans bool, dates QDateTime and
// data QByteArray.
class PropertyList {
public:
    static std::optional<QVariant> fromData(const QByteArray &data);
    static std::optional<QVariant> fromFile(const QString &path);
    // The root dictionary of a file, or none when the file is missing, unreadable, not a
    // property list, or has another kind of root; then, when asked, why in a few words ("it is
    // not a property list").
    static std::optional<QVariantMap> dictionaryFromFile(const QString &path,
                                                         QString *problem = nullptr);

    // A file this large is no definition file; refusing it keeps a mistake from eating memory.
    static constexpr qint64 kMaximumFileSize = qint64(64) * 1024 * 1024;
};
