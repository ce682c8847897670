#include "SampleData.h"
#include "ScreenshotTour.h"

#include "core/shell/AppCore.h"
#include "ui/shell/AppController.h"

#include <QApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationName(QStringLiteral("Vantorel"));
    const QStringList args = app.arguments();
    if (args.size() != 2) {
        std::fprintf(stderr, "usage: vantorel-screenshot-tour FOLDER\n");
        return 2;
    }
    const QString folder = args.at(1);
    QDir().mkpath(folder);

    // A first start finds the nodes and their data files; the sample data goes there, and a
    // second start then finds it as if it had been downloaded.
    AppController *controller = AppController::create();
    controller->awakeFromNib();
    SampleData::fill(controller->core(), QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins"));
    delete controller;
    controller = AppController::create();
    controller->awakeFromNib();
    controller->applicationDidFinishLaunching();

    ScreenshotTour tour(controller, folder);
    const int failures = tour.run();
    controller->applicationWillTerminate();
    delete controller;
    return failures == 0 ? 0 : 1;
}
