#pragma once

#include <QString>
#include <QStringView>

#include <span>

// The three transformations that turn a downloaded bulletin into readable text. Each one is an
// ordered list of replacement passes; a pass replaces every occurrence of its search text,
// leftmost first, never overlapping, and never looks again at text it has just inserted. All of
// them are pure functions: linear in the length of the text, they read no state and cannot fail.
class ReportFormatter {
public:
    struct Pass {
        QStringView search;
        QStringView replacement;
    };

    // The data file names that select the first two transformations; every other name selects
    // the one for other reports. Compared exactly.
    static constexpr const char *kDailyReportFileName = "RSGA.txt";
    static constexpr const char *kHighlightsFileName = "WKHF.txt";

    // The daily space weather report: Roman section headings become Arabic ones with an empty
    // line before them, then the other-reports passes.
    static QString munchDailySpaceWeatherReportFromString(const QString &text);
    // The weekly highlights: paragraphs reflowed into single lines, lines that begin with a
    // marker kept on lines of their own.
    static QString munchSolarActivityHighlightsFromString(const QString &text);
    // Any other bulletin: the header labels and comment markers go.
    static QString munchOtherReportsFromString(const QString &text);

    // The transformation that a node's data file name selects.
    static QString reformat(const QString &text, const QString &dataFileName);

    static std::span<const Pass> dailyReportPasses();
    static std::span<const Pass> highlightsPasses();
    static std::span<const Pass> otherReportsPasses();

    // One pass over the whole text.
    static QString replaceAll(const QString &text, QStringView search, QStringView replacement);
    // The passes in order, each over the result of the one before.
    static QString applyPasses(const QString &text, std::span<const Pass> passes);

    // The report area breaks a line at LF, at CR LF and at a lone CR alike. The text it is given
    // has every such break written as one LF, so that the text printed on a terminal and the text
    // on screen are the same, line for line.
    static QString withUnixLineBreaks(const QString &text);
};
