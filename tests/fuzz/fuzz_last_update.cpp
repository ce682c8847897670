// The stored last-update texts. A node keeps its last update as "Monday, Nov 16 2026 at 05:57 PM"
// in the settings file, which a user or an older version may have left in any state, and reads it
// back at every start. The reader must never crash, and it must agree with the writer: a text it
// accepts, written back and read again, names the same minute; and any moment, written and read
// back, writes the same text again (the moment itself may move by the hour that comes twice at
// the end of summer time, since the text carries no offset).
#include "FuzzEnvironment.h"

#include "core/sources/UpdateTimeText.h"

#include <QDateTime>

#include <cstdint>
#include <cstdlib>
#include <cstring>

constexpr auto check = &FuzzEnvironment::check;

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    FuzzEnvironment::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const QDateTime parsed = UpdateTimeText::parseLongLastUpdate(text);
    if (parsed.isValid()) {
        check(parsed.time().second() == 0 && parsed.time().msec() == 0);
        const QString written = UpdateTimeText::longLastUpdate(parsed);
        check(UpdateTimeText::parseLongLastUpdate(written) == parsed);
    }

    // The same bytes as a moment: seconds from 1970, within the years the text form can hold.
    if (size >= sizeof(qint64)) {
        qint64 raw = 0;
        std::memcpy(&raw, data, sizeof raw);
        // Early January of year 1 to late December 9999, in any zone.
        constexpr qint64 kYear1 = -62135596800 + 86400 * 2;
        constexpr qint64 kYear9999 = 253402300799 - 86400 * 2;
        const qint64 span = kYear9999 - kYear1;
        const qint64 seconds = kYear1 + qint64(quint64(raw) % quint64(span));
        const QDateTime moment = QDateTime::fromSecsSinceEpoch(seconds);
        const QString written = UpdateTimeText::longLastUpdate(moment);
        const QDateTime read = UpdateTimeText::parseLongLastUpdate(written);
        check(read.isValid());
        check(UpdateTimeText::longLastUpdate(read) == written);
    }
    return 0;
}
