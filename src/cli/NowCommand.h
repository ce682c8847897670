#pragma once

#include "cli/Command.h"

// "vantorel now [--json] [--data-dir DIR] [--definitions DIR]": the space weather now, from the
// data files of the Now group on disk (no network): a few aligned lines, or with --json the one
// object NowSummary describes. Exit code 0 when every value is there and none is stale, 1
// otherwise, 2 for a usage error.
class NowCommand : public Command {
public:
    QString name() const override { return QStringLiteral("now"); }
    QString summary() const override { return QStringLiteral("print the space weather now"); }

protected:
    QString description() const override;
    void addOptions(QCommandLineParser &parser) override;
    int execute(const QCommandLineParser &parser, const SharedOptions &options) override;
};
