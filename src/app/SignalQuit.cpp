#include "app/SignalQuit.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace orvan::app {

namespace {
int pipeEnds[2] = {-1, -1};

void onSignal(int) {
    char byte = 1;
    (void)!::write(pipeEnds[1], &byte, 1);
}
} // namespace

void quitOnSignals(std::function<void()> quit) {
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
    // Owned by the application, so it goes with it.
    auto* notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [quit = std::move(quit)] {
        char buffer[16];
        while (::read(pipeEnds[0], buffer, sizeof buffer) > 0) {
        }
        quit();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

} // namespace orvan::app
