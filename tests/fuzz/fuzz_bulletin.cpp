// A downloaded bulletin on arbitrary bytes: decoded as the data file is (UTF-16 with a byte-order
// mark, else Mac OS Roman), then through each of the three transformations and the line-break
// normalisation the report area applies. Besides never crashing or hanging, each transformation
// must give what a plain chain of QString::replace calls gives (an independent implementation of
// the same leftmost, non-overlapping replacement), and what every input is promised: no pass
// makes a text more than twice as long, the n-with-tilde that stands for a dash never survives,
// the highlights keep no tab or carriage return, and the normalised text no carriage return.
#include "FuzzEnvironment.h"

#include "core/bulletins/BulletinFile.h"
#include "core/bulletins/ReportFormatter.h"

#include <cstdint>
#include <cstdlib>
#include <span>

constexpr auto check = &FuzzEnvironment::check;

namespace {

QString byQStringReplace(const QString &text, std::span<const ReportFormatter::Pass> passes)
{
    QString result = text;
    for (const ReportFormatter::Pass &pass : passes)
        result.replace(pass.search.toString(), pass.replacement.toString());
    return result;
}

void checkTransformation(const QString &text, const QString &output,
                         std::span<const ReportFormatter::Pass> passes)
{
    check(output == byQStringReplace(text, passes));
    check(output.size() <= 2 * text.size());
    check(!output.contains(QChar(0x00F1)));
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
    const QString text = BulletinFile::decode(bytes);

    // One character per byte, or one per two bytes behind a byte-order mark (with a replacement
    // character for an odd last byte).
    const bool utf16 =
        size >= 2 && ((data[0] == 0xFE && data[1] == 0xFF) || (data[0] == 0xFF && data[1] == 0xFE));
    check(text.size() == (utf16 ? qsizetype(size - 2) / 2 + qsizetype(size % 2) : qsizetype(size)));

    const QString daily = ReportFormatter::munchDailySpaceWeatherReportFromString(text);
    checkTransformation(text, daily, ReportFormatter::dailyReportPasses());
    const QString highlights = ReportFormatter::munchSolarActivityHighlightsFromString(text);
    checkTransformation(text, highlights, ReportFormatter::highlightsPasses());
    check(!highlights.contains(QLatin1Char('\t')) && !highlights.contains(QLatin1Char('\r')));
    const QString other = ReportFormatter::munchOtherReportsFromString(text);
    checkTransformation(text, other, ReportFormatter::otherReportsPasses());
    check(other.size() <= text.size());

    check(ReportFormatter::reformat(text, QStringLiteral("RSGA.txt")) == daily);
    check(ReportFormatter::reformat(text, QStringLiteral("WKHF.txt")) == highlights);
    check(ReportFormatter::reformat(text, QStringLiteral("rsga.txt")) == other);

    for (const QString &shown : {daily, highlights, other}) {
        const QString lines = ReportFormatter::withUnixLineBreaks(shown);
        check(!lines.contains(QLatin1Char('\r')));
        check(lines.size() <= shown.size());
    }
    return 0;
}
