#include "core/now/NowSummary.h"

#include "core/now/NowFormat.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace {

const QString kXrayBand = QStringLiteral("0.1-0.8nm");
const QString kProtonBand = QStringLiteral(">=10 MeV");

// The newest sample that passes the test, or none.
template <typename Test> const NowSample *newest(const NowSamples &samples, Test test)
{
    for (auto it = samples.crbegin(); it != samples.crend(); ++it) {
        if (test(*it))
            return &*it;
    }
    return nullptr;
}

// The sample with the highest value among those that pass the test (the earliest of equals).
template <typename Test> const NowSample *highest(const NowSamples &samples, Test test)
{
    const NowSample *best = nullptr;
    for (const NowSample &sample : samples) {
        if (test(sample) && sample.hasValue() && (!best || sample.value > best->value))
            best = &sample;
    }
    return best;
}

QJsonValue integerOrNull(double value)
{
    return std::isnan(value) ? QJsonValue() : QJsonValue(qint64(std::llround(value)));
}

// The age of a value and whether it is past its threshold.
void addAge(QJsonObject &object, qint64 time, qint64 now, qint64 staleAfter)
{
    object.insert(QStringLiteral("ageSeconds"), now - time);
    object.insert(QStringLiteral("stale"), now - time > staleAfter);
}

QJsonValue kp(const NowSummary::Data &data, qint64 now)
{
    const NowSample *row = newest(data.value(QStringLiteral("kp-forecast")), [now](const auto &s) {
        return s.time <= now &&
               (s.text == QLatin1String("observed") || s.text == QLatin1String("estimated"));
    });
    if (!row)
        row = newest(data.value(QStringLiteral("kp")), [](const auto &) { return true; });
    if (!row)
        return QJsonValue();
    QJsonObject object{{QStringLiteral("value"), row->value},
                       {QStringLiteral("time"), NowFormat::isoTime(row->time)},
                       {QStringLiteral("estimated"), row->text == QLatin1String("estimated")},
                       {QStringLiteral("gScale"), NowSummary::gScale(row->value)}};
    addAge(object, row->time, now, NowSummary::kKpStaleSeconds);
    return object;
}

QJsonValue kpForecastMax(const NowSummary::Data &data, qint64 now)
{
    const NowSample *row = highest(data.value(QStringLiteral("kp-forecast")), [now](const auto &s) {
        return s.text == QLatin1String("predicted") && s.time >= now && s.time <= now + 86400;
    });
    if (!row)
        return QJsonValue();
    return QJsonObject{{QStringLiteral("value"), row->value},
                       {QStringLiteral("time"), NowFormat::isoTime(row->time)},
                       {QStringLiteral("gScale"), NowSummary::gScale(row->value)}};
}

// A satellite by its number where it has one ("18"), else by its name.
QJsonValue satellite(const QString &text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok ? QJsonValue(number) : text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonValue xray(const NowSummary::Data &data, qint64 now)
{
    const NowSample *row = newest(data.value(QStringLiteral("xray")),
                                  [](const auto &s) { return s.series == kXrayBand; });
    if (!row)
        return QJsonValue();
    QJsonObject object{{QStringLiteral("flux"), row->value},
                       {QStringLiteral("class"), NowSummary::xrayClass(row->value)},
                       {QStringLiteral("time"), NowFormat::isoTime(row->time)},
                       {QStringLiteral("satellite"), satellite(row->text)}};
    addAge(object, row->time, now, NowSummary::kMinuteDataStaleSeconds);
    return object;
}

QJsonValue xrayMax24h(const NowSummary::Data &data, qint64 now)
{
    const NowSample *row = highest(data.value(QStringLiteral("xray")), [now](const auto &s) {
        return s.series == kXrayBand && s.time <= now && s.time >= now - 86400;
    });
    if (!row)
        return QJsonValue();
    return QJsonObject{{QStringLiteral("flux"), row->value},
                       {QStringLiteral("class"), NowSummary::xrayClass(row->value)},
                       {QStringLiteral("time"), NowFormat::isoTime(row->time)}};
}

// The newest minute at which every one of the series has a value (fill values and inactive
// spacecraft were left out when the file was read), as {member: value} with its time and source.
QJsonValue newestComplete(const NowSamples &samples, qint64 now,
                          const QList<std::pair<QString, QString>> &members)
{
    QMap<qint64, QJsonObject> minutes;
    for (const NowSample &sample : samples) {
        for (const auto &[series, member] : members) {
            if (sample.series == series) {
                QJsonObject &minute = minutes[sample.time];
                minute.insert(member, sample.value);
                minute.insert(QStringLiteral("source"),
                              sample.text.isEmpty() ? QJsonValue() : QJsonValue(sample.text));
            }
        }
    }
    for (auto it = minutes.cend(); it != minutes.cbegin();) {
        --it;
        QJsonObject object = it.value();
        if (object.size() != members.size() + 1)
            continue;
        object.insert(QStringLiteral("time"), NowFormat::isoTime(it.key()));
        addAge(object, it.key(), now, NowSummary::kMinuteDataStaleSeconds);
        return object;
    }
    return QJsonValue();
}

QJsonValue protons(const NowSummary::Data &data, qint64 now)
{
    const NowSample *row = newest(data.value(QStringLiteral("protons")),
                                  [](const auto &s) { return s.series == kProtonBand; });
    if (!row)
        return QJsonValue();
    QJsonObject object{{QStringLiteral("flux"), row->value},
                       {QStringLiteral("time"), NowFormat::isoTime(row->time)}};
    addAge(object, row->time, now, NowSummary::kMinuteDataStaleSeconds);
    return object;
}

QJsonValue scales(const NowSummary::Data &data)
{
    // Per entry of the file ("0" is today, "1" to "3" the next days): its time and values.
    QMap<int, std::pair<qint64, QHash<QString, double>>> entries;
    for (const NowSample &sample : data.value(QStringLiteral("scales"))) {
        bool ok = false;
        const int day = sample.text.toInt(&ok);
        if (!ok)
            continue;
        entries[day].first = sample.time;
        entries[day].second.insert(sample.series, sample.value);
    }
    if (!entries.contains(0))
        return QJsonValue();
    const auto value = [&](int day, const char *series) {
        return integerOrNull(entries[day].second.value(QLatin1String(series), std::nan("")));
    };
    QJsonArray forecast;
    for (int day = 1; day <= 3; ++day) {
        if (!entries.contains(day))
            continue;
        forecast.append(QJsonObject{
            {QStringLiteral("date"), QDateTime::fromSecsSinceEpoch(entries[day].first, Qt::UTC)
                                         .toString(QStringLiteral("yyyy-MM-dd"))},
            {QStringLiteral("G"), value(day, "G")},
            {QStringLiteral("rMinorProb"), value(day, "rMinorProb")},
            {QStringLiteral("rMajorProb"), value(day, "rMajorProb")},
            {QStringLiteral("sProb"), value(day, "sProb")}});
    }
    return QJsonObject{{QStringLiteral("R"), value(0, "R")},
                       {QStringLiteral("S"), value(0, "S")},
                       {QStringLiteral("G"), value(0, "G")},
                       {QStringLiteral("time"), NowFormat::isoTime(entries[0].first)},
                       {QStringLiteral("forecast"), forecast}};
}

// The first line after the message's header ("Space Weather Message Code:", "Serial Number:",
// "Issue Time:") that is not empty.
QString messageTitle(const QString &message)
{
    static const QRegularExpression header(
        QStringLiteral("^(Space Weather Message Code|Serial Number|Issue Time):"));
    bool inHeader = true;
    for (const QString &raw : message.split(QRegularExpression(QStringLiteral("\r\n|\r|\n")))) {
        const QString line = raw.trimmed();
        if (inHeader && (line.isEmpty() || header.match(line).hasMatch()))
            continue;
        inHeader = false;
        if (!line.isEmpty())
            return line;
    }
    return QString();
}

QJsonValue messages(const NowSummary::Data &data)
{
    if (!data.contains(QStringLiteral("messages")))
        return QJsonValue();
    static const QRegularExpression code(
        QStringLiteral("Space Weather Message Code:[ \\t]*([^\\s]+)"));
    static const QRegularExpression serial(QStringLiteral("Serial Number:[ \\t]*(\\d+)"));
    QJsonArray list;
    const NowSamples &samples = data.value(QStringLiteral("messages"));
    for (auto it = samples.crbegin(); it != samples.crend(); ++it) {
        const QRegularExpressionMatch codeMatch = code.match(it->text);
        const QRegularExpressionMatch serialMatch = serial.match(it->text);
        list.append(
            QJsonObject{{QStringLiteral("code"),
                         codeMatch.hasMatch() ? QJsonValue(codeMatch.captured(1)) : QJsonValue()},
                        {QStringLiteral("serial"),
                         serialMatch.hasMatch() ? QJsonValue(serialMatch.captured(1).toLongLong())
                                                : QJsonValue()},
                        {QStringLiteral("issued"), NowFormat::isoTime(it->time)},
                        {QStringLiteral("title"), messageTitle(it->text)}});
    }
    return list;
}

// --- Plain text ------------------------------------------------------------------------------

QString utcText(const QJsonValue &iso)
{
    const std::optional<qint64> time = NowFormat::parseTime(iso.toString());
    if (!time)
        return QString();
    return QDateTime::fromSecsSinceEpoch(*time, Qt::UTC)
               .toString(QStringLiteral("yyyy-MM-dd HH:mm")) +
           QStringLiteral(" UTC");
}

QString ageInWords(qint64 seconds)
{
    const qint64 minutes = std::max<qint64>(seconds, 0) / 60;
    if (minutes < 60)
        return QStringLiteral("%1 min old").arg(minutes);
    if (minutes < 48 * 60)
        return QStringLiteral("%1 h %2 min old").arg(minutes / 60).arg(minutes % 60);
    return QStringLiteral("%1 d %2 h old").arg(minutes / 1440).arg(minutes / 60 % 24);
}

QString number(const QJsonValue &value, int decimals)
{
    return value.isDouble() ? QString::number(value.toDouble(), 'f', decimals)
                            : QStringLiteral("-");
}

QString scale(const char *letter, const QJsonValue &value)
{
    return QLatin1String(letter) +
           (value.isDouble() ? QString::number(value.toInteger()) : QStringLiteral("-"));
}

} // namespace

NowSummary::Data NowSummary::readFiles(const QList<std::pair<QString, QString>> &files,
                                       QStringList *problems)
{
    Data data;
    for (const auto &[kind, path] : files) {
        if (!QFileInfo::exists(path))
            continue;
        QFile file(path);
        QString problem = QStringLiteral("cannot be read");
        std::optional<NowSamples> samples;
        if (file.open(QIODevice::ReadOnly))
            samples = NowFormat::parse(kind, file.readAll(), &problem);
        if (!samples) {
            if (problems)
                problems->append(QStringLiteral("\"%1\": %2").arg(path, problem));
            continue;
        }
        NowSamples &kept = data[kind];
        kept.append(*samples);
        std::stable_sort(kept.begin(), kept.end(),
                         [](const NowSample &a, const NowSample &b) { return a.time < b.time; });
    }
    return data;
}

QJsonObject NowSummary::summarize(const Data &data, qint64 now)
{
    return {
        {QStringLiteral("generated"), NowFormat::isoTime(now)},
        {QStringLiteral("kp"), kp(data, now)},
        {QStringLiteral("kpForecastMax"), kpForecastMax(data, now)},
        {QStringLiteral("xray"), xray(data, now)},
        {QStringLiteral("xrayMax24h"), xrayMax24h(data, now)},
        {QStringLiteral("solarWind"),
         newestComplete(data.value(QStringLiteral("solar-wind")), now,
                        {{QStringLiteral("speed"), QStringLiteral("speed")},
                         {QStringLiteral("density"), QStringLiteral("density")},
                         {QStringLiteral("temperature"), QStringLiteral("temperature")}})},
        {QStringLiteral("imf"), newestComplete(data.value(QStringLiteral("imf")), now,
                                               {{QStringLiteral("bt"), QStringLiteral("bt")},
                                                {QStringLiteral("bz"), QStringLiteral("bz")}})},
        {QStringLiteral("protons"), protons(data, now)},
        {QStringLiteral("scales"), scales(data)},
        {QStringLiteral("messages"), messages(data)},
    };
}

bool NowSummary::allCurrent(const QJsonObject &summary)
{
    for (auto it = summary.constBegin(); it != summary.constEnd(); ++it) {
        if (it->isNull() || it->toObject().value(QStringLiteral("stale")).toBool())
            return false;
    }
    return true;
}

QString NowSummary::xrayClass(double flux)
{
    static const struct {
        char letter;
        double base;
    } classes[] = {{'X', 1e-4}, {'M', 1e-5}, {'C', 1e-6}, {'B', 1e-7}, {'A', 1e-8}};
    if (std::isnan(flux))
        return QString();
    for (const auto &c : classes) {
        if (flux >= c.base || c.letter == 'A') {
            // Through millionths first, so that 2.3e-4 / 1e-4 = 2.2999999999999998 still reads
            // 2.3 before the cut to tenths.
            const qint64 tenths = std::llround(flux / c.base * 1e6) / 100000;
            return QStringLiteral("%1%2.%3")
                .arg(QLatin1Char(c.letter))
                .arg(tenths / 10)
                .arg(tenths % 10);
        }
    }
    return QString();
}

QString NowSummary::ageText(const QJsonObject &member)
{
    const QString text = ageInWords(member.value(QStringLiteral("ageSeconds")).toInteger());
    return member.value(QStringLiteral("stale")).toBool() ? QStringLiteral("stale: ") + text : text;
}

QStringList NowSummary::messageTexts(const Data &data)
{
    QStringList texts;
    const NowSamples &samples = data.value(QStringLiteral("messages"));
    for (auto it = samples.crbegin(); it != samples.crend(); ++it)
        texts.append(it->text);
    return texts;
}

int NowSummary::gScale(double kp)
{
    return kp < 5.0 ? 0 : std::min(int(std::floor(kp)) - 4, 5);
}

QString NowSummary::plainText(const QJsonObject &summary)
{
    struct Line {
        QString label, value, time, age;
    };
    QList<Line> lines;
    const auto object = [&](const char *member) {
        return summary.value(QLatin1String(member)).toObject();
    };
    const auto add = [&](const QString &label, const char *member, const QString &value,
                         bool withAge = true) {
        const QJsonObject o = object(member);
        if (o.isEmpty())
            lines.append({label, QStringLiteral("no data"), QString(), QString()});
        else
            lines.append({label, value, utcText(o.value(QStringLiteral("time"))),
                          withAge ? NowSummary::ageText(o) : QString()});
    };

    const QJsonObject kpNow = object("kp");
    add(QStringLiteral("Planetary K index"), "kp",
        QStringLiteral("%1 %2, G%3")
            .arg(number(kpNow.value(QStringLiteral("value")), 2),
                 kpNow.value(QStringLiteral("estimated")).toBool() ? QStringLiteral("estimated")
                                                                   : QStringLiteral("observed"))
            .arg(kpNow.value(QStringLiteral("gScale")).toInt()));
    const QJsonObject kpMax = object("kpForecastMax");
    add(QStringLiteral("K index forecast, 24 h"), "kpForecastMax",
        QStringLiteral("%1 at most, G%2")
            .arg(number(kpMax.value(QStringLiteral("value")), 2))
            .arg(kpMax.value(QStringLiteral("gScale")).toInt()),
        false);
    const QJsonObject x = object("xray");
    add(QStringLiteral("X-ray flux"), "xray",
        QStringLiteral("%1 (%2 W/m2)")
            .arg(x.value(QStringLiteral("class")).toString(),
                 QString::number(x.value(QStringLiteral("flux")).toDouble(), 'e', 2)));
    const QJsonObject xMax = object("xrayMax24h");
    add(QStringLiteral("X-ray highest, 24 h"), "xrayMax24h",
        xMax.value(QStringLiteral("class")).toString(), false);
    const QJsonObject wind = object("solarWind");
    add(QStringLiteral("Solar wind"), "solarWind",
        QStringLiteral("%1 km/s, %2 p/cm3, %3 K")
            .arg(number(wind.value(QStringLiteral("speed")), 0),
                 number(wind.value(QStringLiteral("density")), 1),
                 number(wind.value(QStringLiteral("temperature")), 0)));
    const QJsonObject imf = object("imf");
    const double bz = imf.value(QStringLiteral("bz")).toDouble();
    add(QStringLiteral("Magnetic field"), "imf",
        QStringLiteral("Bt %1 nT, Bz %2 nT%3")
            .arg(number(imf.value(QStringLiteral("bt")), 1),
                 number(imf.value(QStringLiteral("bz")), 1),
                 bz < 0 ? QStringLiteral(" (south)") : QString()));
    const QJsonObject p = object("protons");
    add(QStringLiteral("Protons >=10 MeV"), "protons",
        QStringLiteral("%1 pfu").arg(number(p.value(QStringLiteral("flux")), 2)));
    const QJsonObject s = object("scales");
    QStringList days;
    for (const QJsonValue &day : s.value(QStringLiteral("forecast")).toArray())
        days.append(scale("G", day.toObject().value(QStringLiteral("G"))));
    add(QStringLiteral("Scales"), "scales",
        QStringLiteral("%1 %2 %3%4")
            .arg(scale("R", s.value(QStringLiteral("R"))), scale("S", s.value(QStringLiteral("S"))),
                 scale("G", s.value(QStringLiteral("G"))),
                 days.isEmpty() ? QString()
                                : QStringLiteral(", then %1").arg(days.join(QLatin1Char(' ')))),
        false);

    const QJsonValue messageList = summary.value(QStringLiteral("messages"));
    const QJsonArray messageArray = messageList.toArray();
    const QJsonObject latest =
        messageArray.isEmpty() ? QJsonObject() : messageArray.first().toObject();
    if (messageList.isNull())
        lines.append({QStringLiteral("Messages"), QStringLiteral("no data"), QString(), QString()});
    else if (latest.isEmpty())
        lines.append({QStringLiteral("Messages"), QStringLiteral("none"), QString(), QString()});
    else
        lines.append(
            {QStringLiteral("Latest message"),
             QStringLiteral("%1 #%2").arg(latest.value(QStringLiteral("code")).toString(),
                                          number(latest.value(QStringLiteral("serial")), 0)),
             utcText(latest.value(QStringLiteral("issued"))),
             latest.value(QStringLiteral("title")).toString()});

    qsizetype labelWidth = 0, valueWidth = 0, timeWidth = 0;
    for (const Line &line : std::as_const(lines)) {
        labelWidth = std::max(labelWidth, line.label.size());
        valueWidth = std::max(valueWidth, line.value.size());
        timeWidth = std::max(timeWidth, line.time.size());
    }
    QString text = QStringLiteral("%1  %2\n")
                       .arg(QStringLiteral("Space weather at").leftJustified(labelWidth),
                            utcText(summary.value(QStringLiteral("generated"))));
    for (const Line &line : std::as_const(lines)) {
        QString row = line.label.leftJustified(labelWidth) + QStringLiteral("  ") +
                      line.value.leftJustified(valueWidth) + QStringLiteral("  ") +
                      line.time.leftJustified(timeWidth) + QStringLiteral("  ") + line.age;
        while (row.endsWith(QLatin1Char(' ')))
            row.chop(1);
        text += row + QLatin1Char('\n');
    }
    return text;
}
