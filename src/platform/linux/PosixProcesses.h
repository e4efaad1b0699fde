#pragma once
#include "platform/Processes.h"

namespace orvan {

// Children started with posix_spawn. Every child is reaped: by `isRunning` once it has exited, or by
// a small detached waiter when it is stopped or let go while still running, so none is left a zombie.
class PosixProcesses final : public Processes {
public:
    std::shared_ptr<Child> launch(const ChildSpec& request, std::string& error) override;
};

} // namespace orvan
