#include "core/util/SignalQuitter.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int g_signalPipe[2] = {-1, -1};

void onSignal(int signalNumber)
{
    const unsigned char byte = static_cast<unsigned char>(signalNumber);
    // Nothing else is allowed in a signal handler; a full pipe just drops a repeated request.
    [[maybe_unused]] const ssize_t written = ::write(g_signalPipe[0], &byte, 1);
}

} // namespace

SignalQuitter::SignalQuitter(QObject *parent) : QObject(parent)
{
    if (g_signalPipe[0] < 0 && ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalPipe) != 0)
        return;
    ::fcntl(g_signalPipe[0], F_SETFL, ::fcntl(g_signalPipe[0], F_GETFL) | O_NONBLOCK);

    _notifier = new QSocketNotifier(g_signalPipe[1], QSocketNotifier::Read, this);
    connect(_notifier, &QSocketNotifier::activated, this, &SignalQuitter::readSignal);

    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

SignalQuitter::~SignalQuitter()
{
    ::signal(SIGTERM, SIG_DFL);
    ::signal(SIGINT, SIG_DFL);
}

void SignalQuitter::readSignal()
{
    unsigned char byte = 0;
    if (::read(g_signalPipe[1], &byte, 1) != 1)
        return;
    emit quitRequested(int(byte));
    QCoreApplication::quit();
}
