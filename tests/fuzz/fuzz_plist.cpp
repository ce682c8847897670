// The property-list reader on arbitrary bytes: XML, binary, or neither. It must never crash, and
// whatever it returns must respect the nesting limit that protects the stack of every later
// consumer of the tree.
#include "FuzzEnvironment.h"

#include "core/sources/PropertyList.h"

#include <QVariant>

#include <cstdint>
#include <cstdlib>

namespace {

// Containers nest one more than the deepest level the reader accepts: a container at the deepest
// level may still be there when it is empty.
constexpr int kDeepestTree = 65;

int depthOf(const QVariant &value, int depth)
{
    if (depth > kDeepestTree)
        return depth;
    int deepest = 0;
    if (value.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            deepest = std::max(deepest, depthOf(it.value(), depth + 1));
        return std::max(deepest, depth + 1);
    }
    if (value.typeId() == QMetaType::QVariantList) {
        for (const QVariant &item : value.toList())
            deepest = std::max(deepest, depthOf(item, depth + 1));
        return std::max(deepest, depth + 1);
    }
    return depth;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QVariant> root = PropertyList::fromData(bytes);
    if (!root)
        return 0;
    if (depthOf(*root, 0) > kDeepestTree)
        std::abort();
    return 0;
}
