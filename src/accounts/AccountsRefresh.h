#pragma once
// The accounts model's reading state as one value: which pair of reads is current, and what the
// usage read is doing. The model asks it what to do and carries the step out.

#include "accounts/RefreshGeneration.h"
#include "accounts/RefreshPlan.h"

#include <optional>

namespace orvan {

struct UsageReadStep {
    enum class Kind { start, joined, queued };
    Kind kind;
    bool fresh = false;
    int run = 0;
    int generation = 0;
    bool operator==(const UsageReadStep&) const = default;
};

struct AccountsRefresh {
    RefreshGeneration generations;
    RefreshPlan plan;
    int generation = 0; // of the running usage read
    int runningRun = 0; // 0 when none runs
    bool usageIdle = true;
    bool isActive = true;

    bool operator==(const AccountsRefresh&) const = default;

    bool usageBusy() const { return !usageIdle; }

    int beginPair();
    int currentGeneration();
    bool accepts(int generation) const { return RefreshGeneration::accepts(generation, generations.current); }
    std::optional<UsageReadStep> requestUsage(bool fresh, int generation);
    std::optional<UsageReadStep> usageFinished(int run);
    void ownerGone() { isActive = false; }
    void cancel();
};

} // namespace orvan
