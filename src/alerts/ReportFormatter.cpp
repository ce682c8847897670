#include "ReportFormatter.h"

#include <array>

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

QString ReportFormatter::replaceAll(const QString &text, QStringView search,
                                    QStringView replacement)
{
    if (search.isEmpty())
        return text;
    const QStringView source(text);
    qsizetype found = source.indexOf(search);
    if (found < 0)
        return text;

    // One scan from left to right: copy what lies between occurrences, then the replacement, and
    // go on behind the occurrence. The result is built apart from the source, so what a
    // replacement inserts is never searched again.
    QString result;
    result.reserve(replacement.size() > search.size()
                       ? text.size() + (text.size() / search.size()) *
                                           (replacement.size() - search.size())
                       : text.size());
    qsizetype copied = 0;
    while (found >= 0) {
        result.append(source.mid(copied, found - copied));
        result.append(replacement);
        copied = found + search.size();
        found = source.indexOf(search, copied);
    }
    result.append(source.mid(copied));
    result.squeeze();
    return result;
}

QString ReportFormatter::applyPasses(const QString &text, std::span<const Pass> passes)
{
    QString result = text;
    for (const Pass &pass : passes)
        result = replaceAll(result, pass.search, pass.replacement);
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
