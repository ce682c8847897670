// Where start-up time goes: the application started as src/app/main.cpp starts it, with the time
// of each step from the start of main(). Ends the process as soon as the window is on screen,
// without the shutdown sequence, so that a profile of this command (perf record) shows start-up
// alone.

#include "HarnessApp.h"

#include "core/util/ResourceLocator.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainWindow.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QTimer>
#include <QWindow>

#include <unistd.h>

int runStartupSteps(const QStringList &arguments, double mainStarted, double applicationMade)
{
    if (arguments.size() != 2)
        return Harness::usage("startup-steps DEFINITIONS DATA");
    QJsonObject steps;
    steps[QStringLiteral("application_object_ms")] = applicationMade - mainStarted;
    ResourceLocator::setDefinitionsFolder(arguments.at(0));
    double t = Harness::nowMs();
    AppController *controller = AppController::create();
    steps[QStringLiteral("create_ms")] = Harness::nowMs() - t;
    controller->setDataFolderOverride(arguments.at(1));
    t = Harness::nowMs();
    controller->awakeFromNib();
    steps[QStringLiteral("awake_from_nib_ms")] = Harness::nowMs() - t;
    QTimer::singleShot(0, controller, [&] {
        const double start = Harness::nowMs();
        controller->applicationDidFinishLaunching();
        steps[QStringLiteral("did_finish_launching_ms")] = Harness::nowMs() - start;
        t = Harness::nowMs();
    });
    const double loopStarted = Harness::nowMs();
    while (!(controller->window()->windowHandle() &&
             controller->window()->windowHandle()->isExposed()))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    steps[QStringLiteral("shown_to_exposed_ms")] = Harness::nowMs() - t;
    // The first frame: what is painted once the window is exposed.
    t = Harness::nowMs();
    QCoreApplication::processEvents();
    steps[QStringLiteral("first_frame_ms")] = Harness::nowMs() - t;
    steps[QStringLiteral("event_loop_to_exposed_ms")] = Harness::nowMs() - loopStarted;
    steps[QStringLiteral("total_from_main_ms")] = Harness::nowMs() - mainStarted;
    Harness::printJson(steps);
    _exit(0);
}
