#include "BuildInfo.h"
#include "cli/Command.h"
#include "cli/CommandLine.h"
#include "core/settings/Preferences.h"
#include "core/util/SignalQuitter.h"
#include "ui/shell/AppController.h"

#include <QApplication>
#include <QTimer>

namespace {

void setApplicationNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationVersion(QLatin1String(BuildInfo::version));
}

QStringList argumentList(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

int runWindow(int argc, char **argv)
{
    QApplication app(argc, argv);
    setApplicationNames();
    QGuiApplication::setDesktopFileName(QStringLiteral("org.example.Vantorel"));

    const std::optional<SharedOptions> options = CommandLine::windowOptions(app.arguments());
    if (!options)
        return Command::UsageError;
    options->applyDefinitionsFolder();

    // Closing the main window quits; an open log or panel must not keep the process alive.
    QApplication::setQuitOnLastWindowClosed(false);
    SignalQuitter quitter;

    AppController *controller = AppController::create();
    if (!options->dataFolder.isEmpty())
        controller->setDataFolderOverride(options->dataFolder);
    controller->awakeFromNib();
    if (options->timeoutSeconds)
        Preferences::shared().setTimeoutOverride(*options->timeoutSeconds);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, controller,
                     &AppController::applicationWillTerminate);
    QTimer::singleShot(0, controller, &AppController::applicationDidFinishLaunching);

    const int status = app.exec();
    delete controller;
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    if (CommandLine::isHeadless(argumentList(argc, argv))) {
        QCoreApplication app(argc, argv);
        setApplicationNames();
        return CommandLine::runHeadless(app.arguments());
    }
    return runWindow(argc, argv);
}
