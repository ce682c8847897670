// Where start-up time goes: the application started as src/app/main.cpp starts it, with the time
// of each step from the start of main(). Ends the process as soon as the window is on screen,
// without the shutdown sequence, so that a profile of this command (perf record) shows start-up
// alone.

#include "HarnessApp.h"

#include "core/util/ResourceLocator.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainWindow.h"

#include <QCoreApplication>
#include <QEvent>
#include <QJsonObject>
#include <QTimer>
#include <QWindow>

#include <ctime>
#include <unistd.h>

namespace {

// The processor time of the whole process, or of the calling thread, so far, in milliseconds.
double clockMs(clockid_t clock)
{
    timespec ts{};
    clock_gettime(clock, &ts);
    return double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6;
}

// Notes the moment the main window's first frame is done: a zero-timer started while the window
// paints runs once that round of painting, the hand-over to the window system included, is over,
// before anything the application itself schedules from its own painting.
class FirstFrameWatch : public QObject {
public:
    double wallMs = -1;
    double cpuMs = -1;
    double mainThreadCpuMs = -1;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && wallMs < 0) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, [this] {
                wallMs = Harness::nowMs();
                cpuMs = clockMs(CLOCK_PROCESS_CPUTIME_ID);
                mainThreadCpuMs = clockMs(CLOCK_THREAD_CPUTIME_ID);
            });
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

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
    FirstFrameWatch firstFrame;
    controller->window()->installEventFilter(&firstFrame);
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
    // The first frame itself, and the processor time the process had used by then.
    while (firstFrame.wallMs < 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    steps[QStringLiteral("first_frame_from_main_ms")] = firstFrame.wallMs - mainStarted;
    steps[QStringLiteral("first_frame_cpu_ms")] = firstFrame.cpuMs;
    steps[QStringLiteral("first_frame_main_thread_cpu_ms")] = firstFrame.mainThreadCpuMs;
    Harness::printJson(steps);
    _exit(0);
}
