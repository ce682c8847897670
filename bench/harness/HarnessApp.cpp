#include "HarnessApp.h"

#include "BuildInfo.h"
#include "core/util/ResourceLocator.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cstdio>

namespace Harness {

void setApplicationNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationVersion(QLatin1String(BuildInfo::version));
}

AppController *startApplication(const QString &definitionsFolder, const QString &dataFolder)
{
    ResourceLocator::setDefinitionsFolder(definitionsFolder);
    AppController *controller = AppController::create();
    controller->setDataFolderOverride(dataFolder);
    controller->awakeFromNib();
    controller->applicationDidFinishLaunching();
    if (!waitUntilExposed(controller->window()))
        std::fprintf(stderr, "vantorel-bench-harness: the main window was never exposed\n");
    processEventsFor(200);
    return controller;
}

void stopApplication(AppController *controller)
{
    controller->applicationWillTerminate();
    delete controller;
}

void processEventsFor(int milliseconds)
{
    // A real event loop, sleeping between events as the application's own does (processEvents()
    // with a time limit would spin).
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

void runEventLoopUntil(const std::function<bool()> &done, int limitMilliseconds,
                       int checkMilliseconds)
{
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    check.start(checkMilliseconds);
    QTimer::singleShot(limitMilliseconds, &loop, &QEventLoop::quit);
    if (!done())
        loop.exec();
}

bool waitUntilExposed(QWidget *widget)
{
    runEventLoopUntil(
        [widget] { return widget->windowHandle() && widget->windowHandle()->isExposed(); }, 10000);
    return widget->windowHandle() && widget->windowHandle()->isExposed();
}

double nowMs()
{
    static QElapsedTimer clock = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return double(clock.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

void printJson(const QJsonObject &object)
{
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

QJsonArray toJsonArray(const std::vector<double> &values)
{
    QJsonArray array;
    for (const double value : values)
        array.append(value);
    return array;
}

int usage(const char *text)
{
    std::fprintf(stderr, "usage: vantorel-bench-harness %s\n", text);
    return 2;
}

} // namespace Harness
