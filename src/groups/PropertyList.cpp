#include "PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QTimeZone>

#include <cstdlib>

#include <plist/plist.h>

#include <memory>

namespace {

struct PlistDeleter {
    void operator()(plist_t p) const { plist_free(p); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

// Property lists nest; a hostile file could nest deeply enough to exhaust the stack.
constexpr int kMaximumDepth = 64;

std::optional<QVariant> convert(plist_t node, int depth)
{
    if (!node || depth > kMaximumDepth)
        return std::nullopt;

    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return QVariant(qint64(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return QVariant(value);
    }
    case PLIST_STRING: {
        char *value = nullptr;
        plist_get_string_val(node, &value);
        QString text = value ? QString::fromUtf8(value) : QString();
        free(value);
        return QVariant(text);
    }
    case PLIST_KEY: {
        char *value = nullptr;
        plist_get_key_val(node, &value);
        QString text = value ? QString::fromUtf8(value) : QString();
        free(value);
        return QVariant(text);
    }
    case PLIST_DATA: {
        char *value = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &value, &length);
        QByteArray data(value, qsizetype(length));
        free(value);
        return QVariant(data);
    }
    case PLIST_DATE: {
        int32_t sec = 0;
        int32_t usec = 0;
        plist_get_date_val(node, &sec, &usec);
        // Property-list dates count from 2001-01-01 00:00 UTC.
        const QDateTime epoch(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
        return QVariant(epoch.addMSecs(qint64(sec) * 1000 + usec / 1000));
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t count = plist_array_get_size(node);
        for (uint32_t i = 0; i < count; ++i) {
            auto item = convert(plist_array_get_item(node, i), depth + 1);
            if (!item)
                return std::nullopt;
            list.append(*item);
        }
        return QVariant(list);
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        if (!it)
            return QVariant(map);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!key)
                break;
            const QString name = QString::fromUtf8(key);
            free(key);
            auto item = convert(value, depth + 1);
            if (!item) {
                free(it);
                return std::nullopt;
            }
            map.insert(name, *item);
        }
        free(it);
        return QVariant(map);
    }
    default:
        // UIDs and anything newer have no meaning in our files; keep them out.
        return QVariant();
    }
}

} // namespace

std::optional<QVariant> PropertyList::fromData(const QByteArray &data)
{
    if (data.isEmpty() || data.size() > kMaximumFileSize)
        return std::nullopt;
    plist_t root = nullptr;
    plist_from_memory(data.constData(), uint32_t(data.size()), &root);
    PlistPtr owner(root);
    if (!root)
        return std::nullopt;
    return convert(root, 0);
}

std::optional<QVariant> PropertyList::fromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaximumFileSize)
        return std::nullopt;
    return fromData(file.readAll());
}

std::optional<QVariantMap> PropertyList::dictionaryFromFile(const QString &path)
{
    const auto root = fromFile(path);
    if (!root || root->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return root->toMap();
}
