#pragma once
// Keeps the slow usage read from running twice: at most one read runs, and however often the owner
// asks for a fresh one meanwhile, at most one fresh read follows it.

#include <optional>

namespace orvan {

struct RefreshPlan {
    struct Action {
        enum class Kind { start, joinRunning, queueFresh, alreadyQueued };
        Kind kind;
        bool fresh = false; // for start
        int run = 0;        // for start
        bool operator==(const Action&) const = default;
    };

    int lastRun = 0;
    std::optional<int> running;
    bool queuedFresh = false;

    bool operator==(const RefreshPlan&) const = default;

    Action request(bool fresh);
    // Only ever answers a start: the queued fresh read.
    std::optional<Action> finished(int run);
    void cancel();
};

} // namespace orvan
