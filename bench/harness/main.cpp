// The in-process measurements of bench/run. Each command prints one line of JSON.
//
//   vantorel-bench-harness image DEFINITIONS DATA BIG-FILE OTHER-FILE RUNS
//   vantorel-bench-harness make-jpeg PATH SIDE
//   vantorel-bench-harness reformat-input FOLDER MEGABYTES
//   vantorel-bench-harness reformat FOLDER RUNS
//   vantorel-bench-harness stall DEFINITIONS DATA IDLE-MS SWITCH-MS
//   vantorel-bench-harness startup-steps DEFINITIONS DATA
//   vantorel-bench-harness nowcharts FOLDER ROUNDS

#include "HarnessApp.h"

#include <QApplication>

#include <cstring>
#include <memory>

int runStartupSteps(const QStringList &arguments, double mainStarted, double applicationMade);

int main(int argc, char **argv)
{
    const double mainStarted = Harness::nowMs();
    // The reformatting needs no display; everything else does.
    const bool windowless = argc > 1 && std::strncmp(argv[1], "reformat", 8) == 0;
    std::unique_ptr<QCoreApplication> app;
    if (windowless)
        app = std::make_unique<QCoreApplication>(argc, argv);
    else
        app = std::make_unique<QApplication>(argc, argv);
    Harness::setApplicationNames();
    const double applicationMade = Harness::nowMs();

    QStringList arguments = app->arguments().mid(1);
    const QString command = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (command == QLatin1String("image") || command == QLatin1String("make-jpeg"))
        return runImageBench(QStringList{command} + arguments);
    if (command.startsWith(QLatin1String("reformat")))
        return runReformatBench(QStringList{command} + arguments);
    if (command == QLatin1String("startup-steps"))
        return runStartupSteps(arguments, mainStarted, applicationMade);
    if (command == QLatin1String("stall"))
        return runStallBench(arguments);
    if (command == QLatin1String("nowcharts"))
        return runNowChartsBench(arguments);
    return Harness::usage(
        "image|make-jpeg|reformat-input|reformat|stall|startup-steps|nowcharts ...");
}
