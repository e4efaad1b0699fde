#pragma once
// Helpers for tests that run the real pieces: the simulator as a child on an ephemeral port in a
// temporary home, the Qt transport and clock, and waits on a real event loop with a deadline.

#include "fakes/TempFolder.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"

#include <QCoreApplication>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace orvan::test {

QCoreApplication& qtApp();

// A port nobody listens on right now.
int freePort();

// Runs the event loop until `done` holds or the deadline passes; answers whether it held.
bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds deadline = std::chrono::seconds(20));

// Lets the event loop run for a while, for checks that something does NOT happen.
void runFor(std::chrono::milliseconds span);

// Whether something answers 200 on /healthz at that port.
bool healthzAnswers(int port);

// A temporary home with a data folder, removed at the end.
struct TempHome {
    TempHome();
    TempFolder folder;
    std::filesystem::path root = folder.path();
    std::filesystem::path data() const { return root / "data"; }
    Environment environment() const;
};

std::filesystem::path simulatorPath();

// A simulator started by the test itself (not by the companion).
struct StartedSim {
    StartedSim(int port, const Environment& environment, std::vector<std::string> extra = {});
    ~StartedSim();
    bool running() const;
    int pid = -1;
};

// Reads /proc/<pid>/cmdline or environ as a list of NUL-separated texts.
std::vector<std::string> procList(int pid, const char* file);

} // namespace orvan::test
