#pragma once

#include "cli/Command.h"

#include <QList>

struct WatchEvent;

// "vantorel watch [--once] [--json] [--data-dir DIR] [--definitions DIR]": the watcher without a
// window. With --once it applies the rules once to the Now data on disk, prints each new event on
// a line of its own (with --json, one JSON object per line: "rule", "time", "title", "detail"),
// records it as delivered and exits 0. Without it, it keeps the Now group downloading on its
// schedules, applies the rules after every download that changes their data, and shows each
// event as a desktop notification (and prints it) until SIGTERM or SIGINT. Exit code 1 when the
// Now group's definitions cannot be read, 2 for a usage error.
class WatchCommand : public Command {
public:
    QString name() const override { return QStringLiteral("watch"); }
    QString summary() const override
    {
        return QStringLiteral("notify of storms, flares, messages and aurora");
    }

protected:
    QString description() const override;
    void addOptions(QCommandLineParser &parser) override;
    int execute(const QCommandLineParser &parser, const SharedOptions &options) override;

private:
    void printEvents(const QList<WatchEvent> &events) const;
    bool _json = false;
};
