// A provider's JSON file on arbitrary bytes, read as each kind of data. The quick shape check
// walks the whole text by hand, so besides never crashing or hanging it must agree with the full
// reading: a file that reads has the shape. What is read keeps its promises: samples oldest
// first, never a fill value. And a body sent with gzip unpacks to nothing or to the bytes that
// were packed, never to more than the limit.
#include "FuzzEnvironment.h"

#include "core/net/GzipData.h"
#include "core/now/NowFormat.h"

#include <cstdint>
#include <cstdlib>

constexpr auto check = &FuzzEnvironment::check;

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const QString &kind : NowFormat::kinds()) {
        const QString problem = NowFormat::shapeProblem(kind, bytes);
        const std::optional<NowSamples> samples = NowFormat::parse(kind, bytes);
        check(!samples || problem.isEmpty());
        if (!samples)
            continue;
        for (qsizetype i = 0; i < samples->size(); ++i) {
            const NowSample &sample = samples->at(i);
            check(i == 0 || samples->at(i - 1).time <= sample.time);
            check(!sample.hasValue() || sample.value > NowFormat::kFillValue);
        }
    }
    const std::optional<QByteArray> unpacked = GzipData::inflate(bytes, 1 << 20);
    check(!unpacked || unpacked->size() <= (1 << 20));
    return 0;
}
