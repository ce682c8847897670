#pragma once

#include <QStringList>

// "vantorel fetch [GROUP...]": downloads every item of the named groups (all five when none is
// named) once, through the same queues the window uses, and exits when every queue is empty.
// Each log entry is printed as the log window would show it, messages on standard output and
// errors on standard error. Exit code 0 when nothing failed, 1 when something did, 2 for a
// usage error. Needs no display.
class FetchCommand {
public:
    // The arguments after the command word; a QCoreApplication must exist.
    static int run(const QStringList &arguments);
};
