#pragma once

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class AppController;
class QWidget;

// What the measurements share: the application started the way src/app/main.cpp starts it, a
// monotonic clock, and results printed as one line of JSON.
namespace Harness {

// Names the application as main.cpp does, so that settings land where the application's own go
// (the caller points XDG_CONFIG_HOME somewhere disposable).
void setApplicationNames();

// Builds the controller, reads the definition files from the folder, keeps data in the data
// folder, runs the start-up sequence and waits until the main window is on screen.
AppController *startApplication(const QString &definitionsFolder, const QString &dataFolder);
void stopApplication(AppController *controller);

// Runs the event loop for the given time.
void processEventsFor(int milliseconds);
// Runs the event loop until the condition holds (checked before starting and then every so many
// milliseconds) or the time limit has passed.
void runEventLoopUntil(const std::function<bool()> &done, int limitMilliseconds,
                       int checkMilliseconds = 1);
// Runs the event loop until the widget's window is exposed (at most ten seconds).
bool waitUntilExposed(QWidget *widget);

// Milliseconds on a monotonic clock.
double nowMs();

double median(std::vector<double> values);

void printJson(const QJsonObject &object);
QJsonArray toJsonArray(const std::vector<double> &values);

int usage(const char *text);

} // namespace Harness

int runImageBench(const QStringList &arguments);
int runReformatBench(const QStringList &arguments);
int runStallBench(const QStringList &arguments);
int runNowChartsBench(const QStringList &arguments);
