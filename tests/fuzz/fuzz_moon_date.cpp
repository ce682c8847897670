// The date of "vantorel moon --date DATE", and the Moon computed for whatever it accepts. The
// reader must never crash; it either gives a valid local moment or says why not; a moment it
// gives, written back in the same form, reads as the same moment; and the ephemeris, the texts
// and the JSON object for any date it accepts (years 1 to 9999) must come out without undefined
// behaviour, such as a float that overflows the integer it is converted to.
#include "FuzzEnvironment.h"

#include "cli/MoonCommand.h"
#include "core/moon/MoonCalc.h"
#include "core/moon/MoonText.h"

#include <QJsonDocument>

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
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    QString error;
    const std::optional<QDateTime> date = MoonCommand::parseDate(text, &error);
    if (!date) {
        check(!error.isEmpty());
        return 0;
    }
    check(date->isValid());
    const QString written = date->toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    const std::optional<QDateTime> again = MoonCommand::parseDate(written);
    check(again && *again == *date);

    MoonCalc calc;
    calc.setDate(*date);
    const QStringList lines = MoonText::lines(calc);
    check(lines.size() == 7);
    const QByteArray json = QJsonDocument(MoonCommand::toJson(calc)).toJson();
    check(!json.isEmpty());
    calc.setDisplayForSouthernHemisphere(true);
    calc.update();
    return 0;
}
