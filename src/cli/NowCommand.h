#pragma once

#include <QStringList>

// "vantorel now [--json] [--data-dir DIR] [--definitions DIR]": the space weather now, from the
// data files of the Now group on disk (no network): a few aligned lines, or with --json the one
// object NowSummary describes. Exit code 0 when every value is there and none is stale, 1
// otherwise, 2 for a usage error.
class NowCommand {
public:
    // The arguments after the command word; a QCoreApplication must exist.
    static int run(const QStringList &arguments);
};
