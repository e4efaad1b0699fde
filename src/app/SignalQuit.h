#pragma once
// Turns SIGINT and SIGTERM into an orderly quit on the event loop: a signal handler may do almost
// nothing, so it writes one byte to a pipe that the loop watches.

#include <functional>

namespace orvan::app {

// Installs the handlers; `quit` runs on the event loop's thread when a signal arrives.
void quitOnSignals(std::function<void()> quit);

} // namespace orvan::app
