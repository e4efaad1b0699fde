#include "accounts/AccountsRefresh.h"

namespace orvan {

int AccountsRefresh::beginPair() {
    isActive = true;
    return generations.begin();
}

int AccountsRefresh::currentGeneration() { return generations.current > 0 ? generations.current : generations.begin(); }

std::optional<UsageReadStep> AccountsRefresh::requestUsage(bool fresh, int asked) {
    if (!isActive || asked < 1) return std::nullopt;
    auto action = plan.request(fresh);
    switch (action.kind) {
    case RefreshPlan::Action::Kind::start:
        usageIdle = false;
        generation = asked;
        runningRun = action.run;
        return UsageReadStep{UsageReadStep::Kind::start, action.fresh, action.run, asked};
    case RefreshPlan::Action::Kind::queueFresh:
    case RefreshPlan::Action::Kind::alreadyQueued:
        return UsageReadStep{UsageReadStep::Kind::queued};
    case RefreshPlan::Action::Kind::joinRunning:
        if (generation == asked) return UsageReadStep{UsageReadStep::Kind::joined};
        // The running read's answer will be thrown away as stale: have a fresh one follow it.
        plan.request(true);
        return UsageReadStep{UsageReadStep::Kind::queued};
    }
    return std::nullopt;
}

std::optional<UsageReadStep> AccountsRefresh::usageFinished(int run) {
    auto action = plan.finished(run);
    if (action) {
        if (isActive && generations.current >= 1) {
            usageIdle = false;
            generation = generations.current;
            runningRun = action->run;
            return UsageReadStep{UsageReadStep::Kind::start, true, action->run, generation};
        }
        plan.cancel();
        runningRun = 0;
        usageIdle = true;
        return std::nullopt;
    }
    if (usageIdle || run != runningRun) return std::nullopt;
    runningRun = 0;
    usageIdle = true;
    return std::nullopt;
}

void AccountsRefresh::cancel() {
    isActive = false;
    plan.cancel();
    runningRun = 0;
    usageIdle = true;
    generations.begin();
}

} // namespace orvan
