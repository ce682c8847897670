#pragma once

#include "cli/Command.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

class MoonCalc;

// "vantorel moon [--date DATE] [--southern] [--json]": describes the Moon for one date (the
// present moment unless DATE is given) without a display. Plain output is the Moon view's seven
// lines and the phase name; --json prints every computed value as one JSON object. Exit code 0,
// or 2 for a usage error such as a date that cannot be read.
class MoonCommand : public Command {
public:
    QString name() const override { return QStringLiteral("moon"); }
    QString summary() const override { return QStringLiteral("describe the Moon"); }

    // A local date and time in the user's time zone from "YYYY-MM-DD", "YYYY-MM-DDTHH:MM" or
    // "YYYY-MM-DDTHH:MM:SS"; none, with the reason, when the text is not one of those or names no
    // real moment (a day that does not exist, or a time the clocks skip).
    static std::optional<QDateTime> parseDate(const QString &text, QString *error = nullptr);
    // "2008-01-01T00:00:00+00:00": to the second, with the date's offset from universal time.
    static QString isoDate(const QDateTime &date);
    static QJsonObject toJson(const MoonCalc &calc);

protected:
    QString description() const override;
    void addOptions(QCommandLineParser &parser) override;
    int execute(const QCommandLineParser &parser, const SharedOptions &options) override;
};
