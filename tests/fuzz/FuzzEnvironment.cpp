#include "FuzzEnvironment.h"

#include "../support/HomeEnvironment.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<QTemporaryDir> &homeDir()
{
    static std::unique_ptr<QTemporaryDir> dir;
    return dir;
}

void quietMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "fatal: %s\n", qPrintable(message));
}

} // namespace

void FuzzEnvironment::setUp()
{
    homeDir() =
        std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/vantorel-fuzz-XXXXXX"));
    if (!homeDir()->isValid()) {
        std::fprintf(stderr, "cannot make a temporary home\n");
        std::abort();
    }
    const QByteArray home = homeDir()->path().toLocal8Bit();
    pointHomeAt(home);
    // Dates are read and written as local time; a zone with summer time exercises the hour that
    // is skipped and the one that comes twice. Fixed here, so that a reproducer behaves the same
    // on every machine.
    setenv("TZ", "America/New_York", 1);
    qInstallMessageHandler(quietMessages);

    static int argc = 1;
    static char name[] = "vantorel-fuzz";
    static char *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationName(QStringLiteral("Vantorel"));
}

QString FuzzEnvironment::home()
{
    return homeDir()->path();
}

QString FuzzEnvironment::makeFolder(const QString &name)
{
    const QString path = home() + QLatin1Char('/') + name;
    QDir().mkpath(path);
    return path;
}

void FuzzEnvironment::check(bool condition)
{
    if (!condition)
        std::abort();
}
