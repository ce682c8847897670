// Report reformatting: the time the transformations take on 10 MB bulletins. The Python
// baseline (bench/reformat_baseline.py) applies the very same pass tables, which this program
// writes out, and checks that its result is the same text.

#include "HarnessApp.h"

#include "core/bulletins/BulletinFile.h"
#include "core/bulletins/ReportFormatter.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

struct Kind {
    const char *name;
    const char *dataFileName;
    QStringList fixtures;
    std::span<const ReportFormatter::Pass> passes;
};

QList<Kind> kinds()
{
    return {
        {"daily",
         ReportFormatter::kDailyReportFileName,
         {QStringLiteral("rsga-20251218.txt"), QStringLiteral("rsga-20251225.txt")},
         ReportFormatter::dailyReportPasses()},
        {"highlights",
         ReportFormatter::kHighlightsFileName,
         {QStringLiteral("wkhf-20251222.txt")},
         ReportFormatter::highlightsPasses()},
        {"other",
         "DSD.txt",
         {QStringLiteral("other-3day-forecast-20251221.txt"),
          QStringLiteral("other-advisory-outlook-20251222.txt"),
          QStringLiteral("other-discussion-20251221.txt"), QStringLiteral("other-dsd-20251222.txt"),
          QStringLiteral("other-srs-20000922.txt"), QStringLiteral("other-wwv-20251222.txt")},
         ReportFormatter::otherReportsPasses()},
    };
}

bool writeUtf8(const QString &path, const QString &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0;
}

std::optional<QString> readUtf8(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll());
}

QString inputPath(const QDir &folder, const Kind &kind)
{
    return folder.filePath(QLatin1String(kind.name) + QStringLiteral(".in.txt"));
}

// Real bulletins, decoded as the application decodes a data file, one after another until the
// text is that long.
int makeInputs(const QDir &folder, qsizetype characters)
{
    QJsonObject tables;
    for (const Kind &kind : kinds()) {
        QStringList bulletins;
        for (const QString &name : kind.fixtures) {
            const auto text =
                BulletinFile::read(QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins/") + name);
            if (!text) {
                std::fprintf(stderr, "cannot read the fixture %s\n", qPrintable(name));
                return 1;
            }
            bulletins.append(*text);
        }
        QString text;
        text.reserve(characters + 4096);
        for (qsizetype i = 0; text.size() < characters; ++i)
            text += bulletins.at(i % bulletins.size());
        if (!writeUtf8(inputPath(folder, kind), text))
            return 1;

        QJsonArray passes;
        for (const ReportFormatter::Pass &pass : kind.passes)
            passes.append(QJsonArray{pass.search.toString(), pass.replacement.toString()});
        tables[QLatin1String(kind.name)] =
            QJsonObject{{QStringLiteral("data_file"), QLatin1String(kind.dataFileName)},
                        {QStringLiteral("characters"), double(text.size())},
                        {QStringLiteral("passes"), passes}};
    }
    QFile file(folder.filePath(QStringLiteral("passes.json")));
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    file.write(QJsonDocument(tables).toJson());
    return 0;
}

int measure(const QDir &folder, int runs)
{
    QJsonObject result;
    for (const Kind &kind : kinds()) {
        const auto text = readUtf8(inputPath(folder, kind));
        if (!text)
            return 1;
        const QString dataFileName = QLatin1String(kind.dataFileName);
        QString output = ReportFormatter::reformat(*text, dataFileName);
        std::vector<double> times;
        for (int i = 0; i < runs; ++i) {
            const double start = Harness::nowMs();
            output = ReportFormatter::reformat(*text, dataFileName);
            times.push_back(Harness::nowMs() - start);
        }
        writeUtf8(folder.filePath(QLatin1String(kind.name) + QStringLiteral(".vantorel.txt")),
                  output);
        result[QLatin1String(kind.name)] =
            QJsonObject{{QStringLiteral("characters"), double(text->size())},
                        {QStringLiteral("times_ms"), Harness::toJsonArray(times)},
                        {QStringLiteral("median_ms"), Harness::median(times)}};
    }
    Harness::printJson(result);
    return 0;
}

} // namespace

int runReformatBench(const QStringList &arguments)
{
    if (arguments.value(0) == QLatin1String("reformat-input") && arguments.size() == 3) {
        QDir().mkpath(arguments.at(1));
        return makeInputs(QDir(arguments.at(1)),
                          qsizetype(arguments.at(2).toDouble() * 1024 * 1024));
    }
    if (arguments.value(0) == QLatin1String("reformat") && arguments.size() == 3)
        return measure(QDir(arguments.at(1)), arguments.at(2).toInt());
    return Harness::usage("reformat-input FOLDER MEGABYTES | reformat FOLDER RUNS");
}
