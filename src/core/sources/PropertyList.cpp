#include "core/sources/PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>
#include <cstdlib>

#include <plist/plist.h>

#include <memory>
#include <vector>

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
        // By pointer and length: a string may hold a NUL character (a stray byte in an edited
        // file), and the copying getter aborts the program on one.
        uint64_t length = 0;
        const char *value = plist_get_string_ptr(node, &length);
        return QVariant(value ? QString::fromUtf8(value, qsizetype(length)) : QString());
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

// A big-endian unsigned integer of any width, read as the library reads it: of more than eight
// bytes only the last eight count.
quint64 bigEndian(const unsigned char *bytes, int size)
{
    quint64 value = 0;
    for (int i = std::max(0, size - 8); i < size; ++i)
        value = value << 8 | bytes[i];
    return value;
}

// Whether a binary property list holds a UTF-16 string with a NUL character. The library reads
// dictionary keys only through a getter that aborts the program on such a key, so such a file is
// refused before it is parsed. Every object the library can reach is listed in the offset table,
// so looking at each of those is enough; a table that does not fit is left to the library, which
// refuses it. Entries may point at one long string again and again, so the zero units are counted
// once, in one pass, and each string only looks up whether one falls within it.
bool hasUtf16StringWithNul(const QByteArray &data)
{
    constexpr qsizetype kHeaderSize = 8; // "bplist00"
    constexpr qsizetype kTrailerSize = 32;
    if (data.size() < kHeaderSize + kTrailerSize || !data.startsWith("bplist00"))
        return false;
    const auto *bytes = reinterpret_cast<const unsigned char *>(data.constData());
    const quint64 size = quint64(data.size());
    const unsigned char *trailer = bytes + size - kTrailerSize;
    const int offsetSize = trailer[6];
    const quint64 objectCount = bigEndian(trailer + 8, 8);
    const quint64 tableOffset = bigEndian(trailer + 24, 8);
    if (offsetSize < 1 || tableOffset >= size ||
        objectCount > (size - tableOffset) / quint64(offsetSize))
        return false;

    // A zero unit is two zero bytes; one that begins at an even position cannot be part of a
    // string that begins at an odd one. Counted up to every 64th byte for either parity, so that
    // whether a string holds one is known by looking at no more than 128 bytes.
    constexpr quint64 kBlock = 64;
    const auto isZeroUnit = [&](quint64 p) { return p + 1 < size && !bytes[p] && !bytes[p + 1]; };
    std::vector<quint32> before[2];
    before[0].resize(size / kBlock + 1);
    before[1].resize(size / kBlock + 1);
    quint32 counted[2] = {0, 0};
    for (quint64 p = 0; p <= size; ++p) {
        if (p % kBlock == 0) {
            before[0][p / kBlock] = counted[0];
            before[1][p / kBlock] = counted[1];
        }
        if (p < size)
            counted[p % 2] += isZeroUnit(p) ? 1 : 0;
    }
    if (counted[0] == 0 && counted[1] == 0)
        return false;
    // Zero units of the parity that begin before the position.
    const auto zeroUnitsBefore = [&](int parity, quint64 position) {
        quint32 count = before[parity][position / kBlock];
        for (quint64 p = position / kBlock * kBlock; p < position; ++p)
            count += (p % 2 == quint64(parity) && isZeroUnit(p)) ? 1 : 0;
        return count;
    };

    for (quint64 i = 0; i < objectCount; ++i) {
        const quint64 offset = bigEndian(bytes + tableOffset + i * quint64(offsetSize), offsetSize);
        if (offset >= size || (bytes[offset] >> 4) != 0x6)
            continue;
        quint64 position = offset + 1;
        quint64 units = bytes[offset] & 0x0F;
        if (units == 0x0F) {
            // The length follows as an integer object.
            if (position >= size || (bytes[position] >> 4) != 0x1)
                continue;
            const int lengthSize = 1 << (bytes[position] & 0x0F);
            ++position;
            if (lengthSize > int(size - position))
                continue;
            units = bigEndian(bytes + position, lengthSize);
            position += quint64(lengthSize);
        }
        const quint64 end = position + 2 * std::min(units, (size - position) / 2);
        const int parity = int(position % 2);
        if (zeroUnitsBefore(parity, end) != zeroUnitsBefore(parity, position))
            return true;
    }
    return false;
}

} // namespace

std::optional<QVariant> PropertyList::fromData(const QByteArray &data)
{
    if (data.isEmpty() || data.size() > kMaximumFileSize || hasUtf16StringWithNul(data))
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

std::optional<QVariantMap> PropertyList::dictionaryFromFile(const QString &path, QString *problem)
{
    const auto fail = [problem](const QString &reason) -> std::optional<QVariantMap> {
        if (problem)
            *problem = reason;
        return std::nullopt;
    };
    const QFileInfo info(path);
    if (!info.exists())
        return fail(QStringLiteral("it is missing"));
    if (info.isDir())
        return fail(QStringLiteral("it is a folder, not a file"));
    // Reading a pipe or a device could wait for ever.
    if (!info.isFile())
        return fail(QStringLiteral("it is not a plain file"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("it cannot be opened (%1)").arg(file.errorString()));
    if (file.size() > kMaximumFileSize)
        return fail(QStringLiteral("it is larger than %1 MB").arg(kMaximumFileSize >> 20));
    const QByteArray data = file.readAll();
    if (data.isEmpty())
        return fail(QStringLiteral("it is empty"));
    const auto root = fromData(data);
    if (!root)
        return fail(QStringLiteral("it is not a property list, or a damaged one"));
    if (root->typeId() != QMetaType::QVariantMap)
        return fail(QStringLiteral("its root is not a dictionary"));
    return root->toMap();
}
