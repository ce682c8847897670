#pragma once

#include "cli/Command.h"

class FlatGroup;

// "vantorel report NAME": prints a bulletin exactly as the Alerts view shows it, in UTF-8 on
// standard output. NAME is a file (reformatted by its own name, or by --as FILENAME) or a report
// of the Alerts group, named by its data file name or its title, whose stored copy is printed.
// "vantorel report --list" lists the reports. Exit code 0 when a bulletin was printed, 1 when
// there is none to print (the reason on standard error), 2 for a usage error. Needs no display.
class ReportCommand : public Command {
public:
    QString name() const override { return QStringLiteral("report"); }
    QString summary() const override { return QStringLiteral("print a bulletin"); }

protected:
    QString description() const override;
    bool takesSharedOptions() const override { return true; }
    void addOptions(QCommandLineParser &parser) override;
    int execute(const QCommandLineParser &parser, const SharedOptions &options) override;

private:
    int listReports(const FlatGroup &group);
    int printFile(const QString &path, const QString &dataFileName);
};
