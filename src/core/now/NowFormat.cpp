#include "core/now/NowFormat.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

enum class FieldType { Time, Number, Text, Flag };

struct Field {
    const char *name;
    FieldType type;
};

// What every row of a kind's file must hold. The scales file is an object, checked on its own.
struct KindShape {
    const char *kind;
    QList<Field> fields;
    bool mayBeEmpty = false;
};

const QList<KindShape> &shapes()
{
    using T = FieldType;
    static const QList<KindShape> list = {
        {"kp", {{"time_tag", T::Time}, {"Kp", T::Number}}},
        {"kp-forecast", {{"time_tag", T::Time}, {"kp", T::Number}, {"observed", T::Text}}},
        {"xray", {{"time_tag", T::Time}, {"flux", T::Number}, {"energy", T::Text}}},
        {"solar-wind",
         {{"time_tag", T::Time},
          {"active", T::Flag},
          {"proton_speed", T::Number},
          {"proton_density", T::Number},
          {"proton_temperature", T::Number}}},
        {"imf",
         {{"time_tag", T::Time}, {"active", T::Flag}, {"bt", T::Number}, {"bz_gsm", T::Number}}},
        {"protons", {{"time_tag", T::Time}, {"flux", T::Number}, {"energy", T::Text}}},
        {"f107", {{"time_tag", T::Time}, {"flux", T::Number}}},
        // Quiet days bring no messages at all.
        {"messages",
         {{"product_id", T::Text}, {"issue_datetime", T::Time}, {"message", T::Text}},
         true},
    };
    return list;
}

const KindShape *shapeOf(const QString &kind)
{
    for (const KindShape &shape : shapes()) {
        if (kind == QLatin1String(shape.kind))
            return &shape;
    }
    return nullptr;
}

QString quoted(const char *name)
{
    return QLatin1Char('"') + QLatin1String(name) + QLatin1Char('"');
}

// A number as the files give it: unquoted, or (as the older files did) quoted; NaN for null, text
// that is no number, and fill values.
double measured(const QJsonValue &value)
{
    double d = std::nan("");
    if (value.isDouble()) {
        d = value.toDouble();
    } else if (value.isString()) {
        bool ok = false;
        d = value.toString().trimmed().toDouble(&ok);
        if (!ok)
            return std::nan("");
    }
    return d <= NowFormat::kFillValue ? std::nan("") : d;
}

bool isNumberText(const QJsonValue &value)
{
    bool ok = false;
    if (value.isString())
        value.toString().trimmed().toDouble(&ok);
    return ok;
}

QString fieldProblem(const QJsonObject &row, const Field &field, const QString &where)
{
    const auto it = row.constFind(QLatin1String(field.name));
    if (it == row.constEnd())
        return QStringLiteral("no %1 in %2").arg(quoted(field.name), where);
    const QJsonValue value = *it;
    switch (field.type) {
    case FieldType::Time:
        if (!value.isString() || !NowFormat::parseTime(value.toString()))
            return QStringLiteral("%1 is not a time").arg(quoted(field.name));
        break;
    case FieldType::Number:
        if (!value.isNull() && !value.isDouble() && !isNumberText(value))
            return QStringLiteral("%1 is not a number").arg(quoted(field.name));
        break;
    case FieldType::Text:
        if (!value.isString())
            return QStringLiteral("%1 is not text").arg(quoted(field.name));
        break;
    case FieldType::Flag:
        if (!value.isBool())
            return QStringLiteral("%1 is not true or false").arg(quoted(field.name));
        break;
    }
    return QString();
}

// The row's time, read from the shape's time field (every row kind has one).
std::optional<qint64> rowTime(const QJsonObject &row, const KindShape &shape)
{
    for (const Field &field : shape.fields) {
        if (field.type == FieldType::Time)
            return NowFormat::parseTime(row.value(QLatin1String(field.name)).toString());
    }
    return std::nullopt;
}

QString rowProblem(const QByteArrayView element, const KindShape &shape,
                   std::optional<qint64> *newestTime = nullptr)
{
    const QByteArray bytes = element.toByteArray();
    const QJsonDocument row = QJsonDocument::fromJson(bytes);
    if (!row.isObject()) {
        return bytes.startsWith('[') ? QStringLiteral("the rows are arrays, not objects")
                                     : QStringLiteral("the rows are not objects");
    }
    const QJsonObject object = row.object();
    for (const Field &field : shape.fields) {
        const QString problem = fieldProblem(object, field, QStringLiteral("the rows"));
        if (!problem.isEmpty())
            return problem;
    }
    if (newestTime) {
        const std::optional<qint64> time = rowTime(object, shape);
        if (time && (!*newestTime || **newestTime < *time))
            *newestTime = time;
    }
    return QString();
}

// A forecast's newest row is a prediction; the data is as recent as its newest observed or
// estimated row. The file is a few kilobytes, so it is read whole.
std::optional<qint64> newestKnownKp(const QByteArray &json, const KindShape &shape)
{
    std::optional<qint64> newest;
    const QJsonArray rows = QJsonDocument::fromJson(json).array();
    for (const QJsonValue &value : rows) {
        const QJsonObject row = value.toObject();
        if (row.value(QLatin1String("observed")).toString() == QLatin1String("predicted"))
            continue;
        const std::optional<qint64> time = rowTime(row, shape);
        if (time && (!newest || *newest < *time))
            newest = time;
    }
    return newest;
}

// The outline of a JSON text, found in one pass without building anything: the root's opening
// character and, for an array, its first and last elements. None when strings, brackets or braces
// do not close properly or something follows the root: the file is damaged or was cut short.
struct Outline {
    char root = 0;
    qsizetype count = 0;
    QByteArrayView first;
    QByteArrayView last;
};

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::optional<Outline> outline(QByteArrayView json)
{
    const char *const end = json.data() + json.size();
    const auto skipBlanks = [end](const char *p) {
        while (p < end && isBlank(*p))
            ++p;
        return p;
    };
    const char *p = skipBlanks(json.data() + (json.startsWith("\xEF\xBB\xBF") ? 3 : 0));
    if (p == end)
        return std::nullopt;
    Outline result;
    result.root = *p;
    if (result.root != '[' && result.root != '{')
        return result;

    // Only these characters change anything; the runs between them are skipped unread.
    static const std::array<bool, 256> structural = [] {
        std::array<bool, 256> table{};
        for (const char c : QByteArrayView("\"[]{},"))
            table[uchar(c)] = true;
        return table;
    }();
    const bool rootArray = result.root == '[';
    const char *elementStart = nullptr;
    const auto endElement = [&](const char *elementEnd) {
        while (elementEnd > elementStart && isBlank(elementEnd[-1]))
            --elementEnd;
        if (elementEnd <= elementStart)
            return;
        const QByteArrayView element(elementStart, elementEnd - elementStart);
        if (result.count++ == 0)
            result.first = element;
        result.last = element;
    };
    std::vector<char> open{rootArray ? ']' : '}'};
    if (rootArray)
        elementStart = skipBlanks(p + 1);
    for (++p; p < end && !open.empty();) {
        const char c = *p;
        if (!structural[uchar(c)]) {
            ++p;
        } else if (c == '"') {
            // The closing quote is the first one not escaped by an odd run of backslashes.
            const char *q = p + 1;
            for (;;) {
                q = static_cast<const char *>(std::memchr(q, '"', size_t(end - q)));
                if (!q)
                    return std::nullopt;
                const char *run = q;
                while (run > p + 1 && run[-1] == '\\')
                    --run;
                if ((q - run) % 2 == 0)
                    break;
                ++q;
            }
            p = q + 1;
        } else if (c == '[' || c == '{') {
            open.push_back(c == '[' ? ']' : '}');
            ++p;
        } else if (c == ']' || c == '}') {
            if (open.back() != c)
                return std::nullopt;
            if (open.size() == 1 && rootArray)
                endElement(p);
            open.pop_back();
            ++p;
        } else { // ','
            if (open.size() == 1 && rootArray) {
                endElement(p);
                elementStart = skipBlanks(p + 1);
            }
            ++p;
        }
    }
    if (!open.empty() || skipBlanks(p) != end)
        return std::nullopt;
    return result;
}

QString scalesProblem(const QByteArray &json, std::optional<qint64> *newestTime)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return QStringLiteral("not a JSON object");
    const QJsonValue today = document.object().value(QLatin1String("0"));
    if (!today.isObject())
        return QStringLiteral("no entry \"0\"");
    const QString where = QStringLiteral("entry \"0\"");
    for (const char *name : {"DateStamp", "TimeStamp"}) {
        const QString problem = fieldProblem(today.toObject(), {name, FieldType::Text}, where);
        if (!problem.isEmpty())
            return problem;
    }
    for (const char *name : {"R", "S", "G"}) {
        const QJsonValue scale = today.toObject().value(QLatin1String(name));
        if (!scale.isObject())
            return QStringLiteral("no %1 in %2").arg(quoted(name), where);
        if (!scale.toObject().contains(QLatin1String("Scale")))
            return QStringLiteral("no \"Scale\" in %1 of %2").arg(quoted(name), where);
    }
    // Today's entry is stamped with the time the scales were last set; the others are days.
    if (newestTime) {
        const QJsonObject entry = today.toObject();
        *newestTime = NowFormat::parseTime(entry.value(QLatin1String("DateStamp")).toString() +
                                           QLatin1Char('T') +
                                           entry.value(QLatin1String("TimeStamp")).toString());
    }
    return QString();
}

// --- The aurora forecast ----------------------------------------------------------------------
//
// One object with two times and a grid of 65,160 points: [[longitude, latitude, value], ...].
// Built as a JSON document, the grid costs tens of milliseconds and megabytes of objects; read
// number by number, in one pass, it takes a few milliseconds, quick enough to check a download on
// the main thread.

const QString kCoordinatesProblem =
    QStringLiteral("the coordinates are not [longitude, latitude, value] rows");

// Skips blanks, then takes the character if it is the one expected.
bool take(const char *&p, const char *end, char expected)
{
    while (p < end && isBlank(*p))
        ++p;
    if (p == end || *p != expected)
        return false;
    ++p;
    return true;
}

bool takeNumber(const char *&p, const char *end, double &value)
{
    while (p < end && isBlank(*p))
        ++p;
    const std::from_chars_result result = std::from_chars(p, end, value);
    if (result.ec != std::errc())
        return false;
    p = result.ptr;
    return std::isfinite(value);
}

// Walks the list of points that starts at p (its '['), handing each to use(); every point must be
// a whole degree of the grid, and the list must hold the whole grid. Empty when it does; `after`
// is then just past the list.
template <typename Use>
QString walkGrid(const char *p, const char *end, const char *&after, Use use)
{
    ++p;
    qsizetype count = 0;
    for (bool more = !take(p, end, ']'); more; more = !take(p, end, ']')) {
        double longitude = 0, latitude = 0, value = 0;
        if ((count > 0 && !take(p, end, ',')) || !take(p, end, '[') ||
            !takeNumber(p, end, longitude) || !take(p, end, ',') || !takeNumber(p, end, latitude) ||
            !take(p, end, ',') || !takeNumber(p, end, value) || !take(p, end, ']'))
            return kCoordinatesProblem;
        if (longitude != std::floor(longitude) || latitude != std::floor(latitude) ||
            longitude < 0 || longitude >= AuroraGrid::kLongitudes || latitude < -90 ||
            latitude > 90)
            return QStringLiteral("the point [%1, %2] is not on the grid")
                .arg(longitude)
                .arg(latitude);
        use(int(longitude), int(latitude), value);
        ++count;
    }
    if (count != AuroraGrid::kPoints)
        return QStringLiteral("the grid has %1 points, not %2").arg(count).arg(AuroraGrid::kPoints);
    after = p;
    return QString();
}

// Why the text is not an aurora forecast (empty when it is); fills the grid when one is given.
QString readOvation(const QByteArray &json, AuroraGrid *grid)
{
    const std::optional<Outline> layout = outline(json);
    if (!layout)
        return QStringLiteral("not JSON, or cut short");
    if (layout->root != '{')
        return QStringLiteral("not a JSON object");
    const QByteArrayView key("\"coordinates\"");
    const qsizetype at = json.indexOf(key);
    const char *const end = json.constData() + json.size();
    const char *p = json.constData() + std::max<qsizetype>(at, 0) + key.size();
    if (at < 0 || !take(p, end, ':'))
        return QStringLiteral("no \"coordinates\" in the object");
    if (!take(p, end, '['))
        return kCoordinatesProblem;
    const char *list = p - 1;
    const char *after = nullptr;
    const QString problem = walkGrid(list, end, after, [grid](int lon, int lat, double value) {
        if (grid)
            grid->setValue(lon, lat, value);
    });
    if (!problem.isEmpty())
        return problem;

    // Without its grid, the object is small enough to read whole.
    const QByteArray rest = QByteArrayView(json.constData(), list).toByteArray() + "[]" +
                            QByteArrayView(after, end).toByteArray();
    const QJsonObject object = QJsonDocument::fromJson(rest).object();
    const QString where = QStringLiteral("the object");
    for (const char *name : {"Observation Time", "Forecast Time"}) {
        const QString timeProblem = fieldProblem(object, {name, FieldType::Time}, where);
        if (!timeProblem.isEmpty())
            return timeProblem;
    }
    if (grid) {
        grid->setTimes(
            *NowFormat::parseTime(object.value(QLatin1String("Observation Time")).toString()),
            *NowFormat::parseTime(object.value(QLatin1String("Forecast Time")).toString()));
    }
    return QString();
}

void addSample(NowSamples &samples, const QString &series, const QJsonObject &row,
               const char *timeField, double value, const QString &text = {})
{
    const std::optional<qint64> time =
        NowFormat::parseTime(row.value(QLatin1String(timeField)).toString());
    if (time)
        samples.append({series, *time, value, text});
}

// A satellite or spacecraft as the files name it: a number (18) or a name ("SOLAR1").
QString sourceText(const QJsonValue &value)
{
    return value.isDouble() ? QString::number(value.toDouble()) : value.toString();
}

QString text(const QJsonObject &row, const char *name)
{
    return row.value(QLatin1String(name)).toString();
}

double number(const QJsonObject &row, const char *name)
{
    return measured(row.value(QLatin1String(name)));
}

// One row of an array file. Rows without the value they exist for are left out.
void readRow(const QString &kind, const QJsonObject &row, NowSamples &samples)
{
    const auto addValue = [&](const QString &series, double value, const QString &note = {}) {
        if (!std::isnan(value))
            addSample(samples, series, row, "time_tag", value, note);
    };
    if (kind == QLatin1String("kp")) {
        addValue(QStringLiteral("kp"), number(row, "Kp"));
    } else if (kind == QLatin1String("kp-forecast")) {
        addValue(QStringLiteral("kp"), number(row, "kp"), text(row, "observed"));
    } else if (kind == QLatin1String("xray")) {
        addValue(text(row, "energy"), number(row, "flux"), sourceText(row.value("satellite")));
    } else if (kind == QLatin1String("protons")) {
        // The file holds every energy threshold; the ≥10 MeV one defines the radiation storms.
        if (text(row, "energy") == QLatin1String(">=10 MeV"))
            addValue(text(row, "energy"), number(row, "flux"), sourceText(row.value("satellite")));
    } else if (kind == QLatin1String("f107")) {
        addValue(QStringLiteral("f107"), number(row, "flux"));
    } else if (kind == QLatin1String("solar-wind") || kind == QLatin1String("imf")) {
        // One row per spacecraft and minute; only the active spacecraft's rows are the solar
        // wind, and the newest row is often an inactive spacecraft's.
        if (!row.value(QLatin1String("active")).toBool())
            return;
        const QString source = sourceText(row.value("source"));
        if (kind == QLatin1String("imf")) {
            addValue(QStringLiteral("bt"), number(row, "bt"), source);
            addValue(QStringLiteral("bz"), number(row, "bz_gsm"), source);
        } else {
            addValue(QStringLiteral("speed"), number(row, "proton_speed"), source);
            addValue(QStringLiteral("density"), number(row, "proton_density"), source);
            addValue(QStringLiteral("temperature"), number(row, "proton_temperature"), source);
        }
    } else if (kind == QLatin1String("messages")) {
        const QString message = text(row, "message");
        static const QRegularExpression serial(QStringLiteral("Serial Number:\\s*(\\d+)"));
        const QRegularExpressionMatch match = serial.match(message);
        addSample(samples, text(row, "product_id"), row, "issue_datetime",
                  match.hasMatch() ? match.captured(1).toDouble() : std::nan(""), message);
    }
}

// Today ("0"), yesterday ("-1") and the next three days ("1" to "3"), each a sample per scale
// and probability, null ones included: "no forecast" is worth telling.
void readScales(const QJsonObject &root, NowSamples &samples)
{
    for (auto it = root.constBegin(); it != root.constEnd(); ++it) {
        const QJsonObject entry = it.value().toObject();
        const std::optional<qint64> time =
            NowFormat::parseTime(text(entry, "DateStamp") + QLatin1Char('T') +
                                 (entry.value("TimeStamp").isString() ? text(entry, "TimeStamp")
                                                                      : QStringLiteral("00:00")));
        if (!time)
            continue;
        const auto part = [&](const char *scale, const char *field) {
            return measured(entry.value(QLatin1String(scale)).toObject().value(field));
        };
        const std::pair<const char *, double> values[] = {
            {"R", part("R", "Scale")},
            {"S", part("S", "Scale")},
            {"G", part("G", "Scale")},
            {"rMinorProb", part("R", "MinorProb")},
            {"rMajorProb", part("R", "MajorProb")},
            {"sProb", part("S", "Prob")},
        };
        for (const auto &[series, value] : values)
            samples.append({QLatin1String(series), *time, value, it.key()});
    }
}

} // namespace

QStringList NowFormat::kinds()
{
    QStringList list;
    for (const KindShape &shape : shapes())
        list.append(QLatin1String(shape.kind));
    list.append(QStringLiteral("scales"));
    list.append(QStringLiteral("ovation"));
    return list;
}

bool NowFormat::isKnownKind(const QString &kind)
{
    return kind == QLatin1String("scales") || kind == QLatin1String("ovation") || shapeOf(kind);
}

QString NowFormat::shapeProblem(const QString &kind, const QByteArray &json,
                                std::optional<qint64> *newestTime)
{
    if (newestTime)
        newestTime->reset();
    if (kind == QLatin1String("ovation")) {
        if (!newestTime)
            return readOvation(json, nullptr);
        // The forecast's data time is when it was observed; reading the grid for it costs a few
        // milliseconds, no more than the check itself.
        AuroraGrid grid;
        const QString problem = readOvation(json, &grid);
        if (problem.isEmpty() && grid.observationTime() > 0)
            *newestTime = grid.observationTime();
        return problem;
    }
    const KindShape *shape = shapeOf(kind);
    if (!shape && kind != QLatin1String("scales"))
        return QStringLiteral("\"%1\" is no kind of data this version reads").arg(kind);
    const std::optional<Outline> layout = outline(json);
    if (!layout)
        return QStringLiteral("not JSON, or cut short");
    if (!shape) {
        return layout->root == '{' ? scalesProblem(json, newestTime)
                                   : QStringLiteral("not a JSON object");
    }
    if (layout->root != '[')
        return QStringLiteral("not a JSON array");
    if (layout->count == 0)
        return shape->mayBeEmpty ? QString() : QStringLiteral("no rows");
    std::optional<qint64> newest;
    QString problem = rowProblem(layout->first, *shape, &newest);
    if (problem.isEmpty())
        problem = rowProblem(layout->last, *shape, &newest);
    if (problem.isEmpty() && newestTime)
        *newestTime = kind == QLatin1String("kp-forecast") ? newestKnownKp(json, *shape) : newest;
    return problem;
}

std::optional<NowSamples> NowFormat::parse(const QString &kind, const QByteArray &json,
                                           QString *problem)
{
    if (kind == QLatin1String("ovation")) {
        const std::optional<AuroraGrid> grid = parseOvation(json, problem);
        if (!grid)
            return std::nullopt;
        NowSamples samples{
            {QStringLiteral("observation"), grid->observationTime(), std::nan(""), QString()},
            // Like the K index forecast's rows, the time a prediction is for is not a data time.
            {QStringLiteral("forecast"), grid->forecastTime(), grid->highestValue(),
             QStringLiteral("predicted")}};
        std::stable_sort(samples.begin(), samples.end(),
                         [](const NowSample &a, const NowSample &b) { return a.time < b.time; });
        return samples;
    }
    QString why = shapeProblem(kind, json);
    QJsonParseError error;
    const QJsonDocument document =
        why.isEmpty() ? QJsonDocument::fromJson(json, &error) : QJsonDocument();
    if (why.isEmpty() && error.error != QJsonParseError::NoError)
        why = QStringLiteral("not JSON (%1)").arg(error.errorString());
    if (!why.isEmpty()) {
        if (problem)
            *problem = why;
        return std::nullopt;
    }

    NowSamples samples;
    if (kind == QLatin1String("scales")) {
        readScales(document.object(), samples);
    } else {
        const QJsonArray rows = document.array();
        samples.reserve(rows.size());
        for (const QJsonValue &row : rows)
            readRow(kind, row.toObject(), samples);
    }
    std::stable_sort(samples.begin(), samples.end(),
                     [](const NowSample &a, const NowSample &b) { return a.time < b.time; });
    return samples;
}

std::optional<AuroraGrid> NowFormat::parseOvation(const QByteArray &json, QString *problem)
{
    AuroraGrid grid;
    const QString why = readOvation(json, &grid);
    if (why.isEmpty())
        return grid;
    if (problem)
        *problem = why;
    return std::nullopt;
}

std::optional<qint64> NowFormat::parseTime(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral(
        "^\\s*(\\d{4})-(\\d{2})-(\\d{2})(?:[T ](\\d{2}):(\\d{2})(?::(\\d{2})(?:\\.\\d+)?)?)?"
        "\\s*(Z|UTC|[+-]\\d{2}:?\\d{2})?\\s*$"));
    const QRegularExpressionMatch m = pattern.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const QDate date(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    const QTime time(m.captured(4).toInt(), m.captured(5).toInt(), m.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    qint64 offset = 0;
    const QString zone = m.captured(7);
    if (zone.startsWith(QLatin1Char('+')) || zone.startsWith(QLatin1Char('-'))) {
        const QString digits = zone.mid(1).remove(QLatin1Char(':'));
        offset = (digits.left(2).toInt() * 3600 + digits.mid(2).toInt() * 60) *
                 (zone.startsWith(QLatin1Char('-')) ? -1 : 1);
    }
    return QDateTime(date, time, Qt::UTC).toSecsSinceEpoch() - offset;
}

QString NowFormat::isoTime(qint64 time)
{
    return QDateTime::fromSecsSinceEpoch(time, Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"));
}
