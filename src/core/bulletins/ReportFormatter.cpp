#include "core/bulletins/ReportFormatter.h"

#include <algorithm>
#include <array>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

using Pass = ReportFormatter::Pass;

// Daily report, first part: section headings at the start of a line, Roman to Arabic, each with
// an empty line before it. Every search ends in the full stop right behind the numeral, so no
// heading matches another: "\nI." is not the start of "\nII.", nor "\nIV." of "\nIVA.".
constexpr std::array<Pass, 29> kDailyReportPasses{{
    {u"\nIA.", u"\n\n1A."},
    {u"\nIB.", u"\n\n1B."},
    {u"\nIC.", u"\n\n1C."},
    {u"\nID.", u"\n\n1D."},
    {u"\nIIA.", u"\n\n2A."},
    {u"\nIIB.", u"\n\n2B."},
    {u"\nIIC.", u"\n\n2C."},
    {u"\nIID.", u"\n\n2D."},
    {u"\nIIIA.", u"\n\n3A."},
    {u"\nIIIB.", u"\n\n3B."},
    {u"\nIIIC.", u"\n\n3C."},
    {u"\nIIID.", u"\n\n3D."},
    {u"\nIVA.", u"\n\n4A."},
    {u"\nIVB.", u"\n\n4B."},
    {u"\nIVC.", u"\n\n4C."},
    {u"\nIVD.", u"\n\n4D."},
    {u"\nVIII.", u"\n\n8."},
    {u"\nVII.", u"\n\n7."},
    {u"\nVI.", u"\n\n6."},
    {u"\nV.", u"\n\n5."},
    {u"\nIV.", u"\n\n4."},
    {u"\nIII.", u"\n\n3."},
    {u"\nII.", u"\n\n2."},
    {u"\nI.", u"\n\n1."},
    // The shared tail, as for other reports.
    {u":Product: ", u""},
    {u":Issued:", u"Issued:"},
    {u"\n# ", u"\n"},
    {u"\n#", u"\n"},
    // Mac OS Roman 0x96 is an n with tilde; in these bulletins it stands for a dash.
    {u"\u00F1", u"-"},
}};

// Weekly highlights. A tab marks a line break that must survive and a carriage return a
// paragraph break; every other line break joins two lines of a paragraph, then the markers turn
// back into breaks. The issue line has lost its colon before ":" lines are marked, so it is
// joined to the line before it.
constexpr std::array<Pass, 11> kHighlightsPasses{{
    {u":Product: ", u""},
    {u":Issued:", u"Issued:"},
    {u"\n# ", u"\t"},
    {u"\n#", u"\t"},
    {u"\n: ", u"\t"},
    {u"\n:", u"\t"},
    {u"\u00F1", u"-"},
    {u"\n\n", u"\r"},
    {u"\n", u" "},
    {u"\r", u"\n\n"},
    {u"\t", u"\n"},
}};

// Every other report: the product label goes, the issue line loses its colon, and comment lines
// lose their "#" and the blank behind it.
constexpr std::array<Pass, 5> kOtherReportsPasses{{
    {u":Product: ", u""},
    {u":Issued:", u"Issued:"},
    {u"\n# ", u"\n"},
    {u"\n#", u"\n"},
    {u"\u00F1", u"-"},
}};

// The first occurrence of the search text at or after the position, or -1. A general substring
// search goes character by character; this one compares the first and the last character of the
// search text at sixteen places at once and looks closer only where both match, which in a
// bulletin is almost nowhere. A single character is found with the vectorised character scan.
qsizetype findFrom(QStringView text, QStringView search, qsizetype from)
{
    const qsizetype length = search.size();
    if (length == 1)
        return text.indexOf(search.front(), from);
    const char16_t *data = text.utf16();
    const char16_t *wanted = search.utf16();
    const char16_t first = wanted[0];
    const char16_t last = wanted[length - 1];
    const qsizetype lastStart = text.size() - length;
    const auto matchesAt = [&](qsizetype at) {
        return std::equal(wanted + 1, wanted + length - 1, data + at + 1);
    };
#if defined(__SSE2__)
    const __m128i firsts = _mm_set1_epi16(short(first));
    const __m128i lasts = _mm_set1_epi16(short(last));
    // Two mask bits for each of eight starting places, one per byte of the character.
    const auto candidates = [&](qsizetype at) {
        const __m128i heads = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + at));
        const __m128i tails =
            _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + at + length - 1));
        return unsigned(_mm_movemask_epi8(
            _mm_and_si128(_mm_cmpeq_epi16(heads, firsts), _mm_cmpeq_epi16(tails, lasts))));
    };
    // Sixteen starting places at a time; the last character of the sixteenth is still in the
    // text.
    for (; from + 15 <= lastStart; from += 16) {
        unsigned places = candidates(from) | (candidates(from + 8) << 16);
        while (places) {
            const int bit = std::countr_zero(places);
            if (matchesAt(from + bit / 2))
                return from + bit / 2;
            places &= ~(3u << bit);
        }
    }
#endif
    for (; from <= lastStart; ++from) {
        if (data[from] == first && data[from + length - 1] == last && matchesAt(from))
            return from;
    }
    return -1;
}

} // namespace

std::span<const ReportFormatter::Pass> ReportFormatter::dailyReportPasses()
{
    return kDailyReportPasses;
}

std::span<const ReportFormatter::Pass> ReportFormatter::highlightsPasses()
{
    return kHighlightsPasses;
}

std::span<const ReportFormatter::Pass> ReportFormatter::otherReportsPasses()
{
    return kOtherReportsPasses;
}

namespace {

// One pass: the source with every occurrence replaced, written into the target (whose memory is
// reused when it is large enough). False, with the target untouched, when nothing occurs.
bool replaceInto(QStringView source, QStringView search, QStringView replacement, QString &target)
{
    qsizetype found = findFrom(source, search, 0);
    if (found < 0)
        return false;

    // One scan from left to right: copy what lies between occurrences, then the replacement, and
    // go on behind the occurrence. The result is built apart from the source, so what a
    // replacement inserts is never searched again.
    target.resize(0);
    target.reserve(replacement.size() > search.size()
                       ? source.size() +
                             (source.size() / search.size()) * (replacement.size() - search.size())
                       : source.size());
    qsizetype copied = 0;
    while (found >= 0) {
        target.append(source.mid(copied, found - copied));
        target.append(replacement);
        copied = found + search.size();
        found = findFrom(source, search, copied);
    }
    target.append(source.mid(copied));
    return true;
}

} // namespace

QString ReportFormatter::replaceAll(const QString &text, QStringView search,
                                    QStringView replacement)
{
    QString result;
    if (search.isEmpty() || !replaceInto(text, search, replacement, result))
        return text;
    result.squeeze();
    return result;
}

QString ReportFormatter::applyPasses(const QString &text, std::span<const Pass> passes)
{
    // Two buffers take turns, each pass writing into the one the pass before read from: a long
    // text then takes its memory from the system twice, not once per pass.
    QString result = text;
    QString spare;
    for (const Pass &pass : passes) {
        if (!pass.search.isEmpty() && replaceInto(result, pass.search, pass.replacement, spare))
            result.swap(spare);
    }
    result.squeeze();
    return result;
}

QString ReportFormatter::munchDailySpaceWeatherReportFromString(const QString &text)
{
    return applyPasses(text, kDailyReportPasses);
}

QString ReportFormatter::munchSolarActivityHighlightsFromString(const QString &text)
{
    return applyPasses(text, kHighlightsPasses);
}

QString ReportFormatter::munchOtherReportsFromString(const QString &text)
{
    return applyPasses(text, kOtherReportsPasses);
}

QString ReportFormatter::reformat(const QString &text, const QString &dataFileName)
{
    if (dataFileName == QLatin1String(kDailyReportFileName))
        return munchDailySpaceWeatherReportFromString(text);
    if (dataFileName == QLatin1String(kHighlightsFileName))
        return munchSolarActivityHighlightsFromString(text);
    return munchOtherReportsFromString(text);
}

QString ReportFormatter::withUnixLineBreaks(const QString &text)
{
    // CR LF first, so that its CR does not count as a break of its own.
    return replaceAll(replaceAll(text, u"\r\n", u"\n"), u"\r", u"\n");
}
