#pragma once

#include "cli/Command.h"

// "vantorel fetch [GROUP...]": downloads every item of the named groups (all five when none is
// named) once, through the same queues the window uses, and exits when every queue is empty.
// Each log entry is printed as the log window would show it, messages on standard output and
// errors on standard error. Exit code 0 when nothing failed, 1 when something did, 2 for a
// usage error. Needs no display.
class FetchCommand : public Command {
public:
    QString name() const override { return QStringLiteral("fetch"); }
    QString summary() const override { return QStringLiteral("download groups once and exit"); }

protected:
    QString description() const override;
    bool takesSharedOptions() const override { return true; }
    void addOptions(QCommandLineParser &parser) override;
    int execute(const QCommandLineParser &parser, const SharedOptions &options) override;
};
