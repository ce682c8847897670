#include "core/bulletins/ReportFormatter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <vector>

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

// How much of the text goes through all the passes at a time. A pass over a whole 10 MB text
// reads and writes 20 MB (the characters are 16 bits wide) in main memory; a piece this size
// stays in the processor's cache from the first pass to the last, so the text is read once and
// the result written once, however many passes there are.
constexpr qsizetype kPieceLength = 16 * 1024;

// Makes room for `count` more characters at the end of the buffer, which must not be shared, and
// gives where they begin; the buffer's size counts them until the caller sets it again.
char16_t *extend(QString &buffer, qsizetype count)
{
    const qsizetype size = buffer.size();
    if (buffer.capacity() < size + count)
        buffer.reserve(std::max(size + count, 2 * buffer.capacity()));
    buffer.resize(size + count);
    return reinterpret_cast<char16_t *>(buffer.data()) + size;
}

// One pass over the part of the text that has reached it: every occurrence in the input is
// replaced and the result appended to the output. Unless the input ends the text, its last
// characters that could begin an occurrence completed only by text still to come are left for
// the next call. Gives how many characters of the input were done.
qsizetype runPass(const Pass &pass, QStringView input, bool atEnd, QString &output)
{
    const qsizetype length = pass.search.size();
    const qsizetype size = input.size();
    // Occurrences are at least `length` characters apart, and each may make the text longer.
    const qsizetype growth = std::max<qsizetype>(0, pass.replacement.size() - length);
    const qsizetype start = output.size();
    char16_t *const begin = extend(output, size + size / length * growth);
    char16_t *out = begin;
    const char16_t *in = input.utf16();
    const char16_t *replacement = pass.replacement.utf16();
    qsizetype done = 0;
    for (qsizetype found = findFrom(input, pass.search, 0); found >= 0;
         found = findFrom(input, pass.search, done)) {
        out = std::copy(in + done, in + found, out);
        out = std::copy(replacement, replacement + pass.replacement.size(), out);
        done = found + length;
    }
    // No occurrence begins before the last `length - 1` characters, so all before them is final.
    const qsizetype end = atEnd ? size : std::max(done, size - length + 1);
    out = std::copy(in + done, in + end, out);
    output.resize(start + (out - begin));
    return end;
}

// Drops the first `count` characters, keeping the buffer's memory.
void dropFront(QString &buffer, qsizetype count)
{
    if (count == 0)
        return;
    char16_t *data = reinterpret_cast<char16_t *>(buffer.data());
    std::copy(data + count, data + buffer.size(), data);
    buffer.resize(buffer.size() - count);
}

} // namespace

QString ReportFormatter::replaceAll(const QString &text, QStringView search,
                                    QStringView replacement)
{
    const Pass pass{search, replacement};
    return applyPasses(text, {&pass, 1});
}

QString ReportFormatter::applyPasses(const QString &text, std::span<const Pass> passes)
{
    std::vector<Pass> active;
    std::copy_if(passes.begin(), passes.end(), std::back_inserter(active),
                 [](const Pass &pass) { return !pass.search.isEmpty(); });
    if (active.empty() || text.isEmpty())
        return text;

    // The passes work as a pipeline, piece by piece: each hands what it has done to the next,
    // which works on it while it is still in the cache. The result is that of each pass over the
    // whole text in turn, because a pass holds back only the few characters that could begin an
    // occurrence not yet complete, and takes them up again with the next piece.
    std::vector<QString> waiting(active.size()); // handed to each pass after the first, not done
    // A little more than the text: most passes shorten it, and the few that lengthen it seldom
    // match. The memory is kept as it is at the end (unless a text grew far beyond it): fitted to
    // the exact size, it would not fit the next text of about the same size, which would then
    // take fresh memory from the system page by page, at a cost well above that of the passes.
    QString result;
    result.reserve(text.size() + text.size() / 64 + 64);
    qsizetype firstDone = 0; // the first pass reads the text itself
    for (qsizetype end = 0; end < text.size();) {
        end = std::min(text.size(), end + kPieceLength);
        const bool atEnd = end == text.size();
        for (size_t k = 0; k < active.size(); ++k) {
            QString &output = k + 1 < active.size() ? waiting[k + 1] : result;
            if (k == 0) {
                firstDone += runPass(active[0], QStringView(text).mid(firstDone, end - firstDone),
                                     atEnd, output);
            } else {
                dropFront(waiting[k], runPass(active[k], waiting[k], atEnd, output));
            }
        }
    }
    if (result.capacity() > result.size() + result.size() / 8 + kPieceLength)
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
    static constexpr std::array<Pass, 2> kLineBreakPasses{{{u"\r\n", u"\n"}, {u"\r", u"\n"}}};
    return applyPasses(text, kLineBreakPasses);
}
