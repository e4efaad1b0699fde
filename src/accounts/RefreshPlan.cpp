#include "accounts/RefreshPlan.h"

namespace orvan {

RefreshPlan::Action RefreshPlan::request(bool fresh) {
    if (!running) {
        running = ++lastRun;
        return {Action::Kind::start, fresh, *running};
    }
    if (!fresh) return {Action::Kind::joinRunning};
    if (queuedFresh) return {Action::Kind::alreadyQueued};
    queuedFresh = true;
    return {Action::Kind::queueFresh};
}

std::optional<RefreshPlan::Action> RefreshPlan::finished(int run) {
    if (!running || run != *running) return std::nullopt;
    if (!queuedFresh) {
        running.reset();
        return std::nullopt;
    }
    queuedFresh = false;
    running = ++lastRun;
    return Action{Action::Kind::start, true, *running};
}

void RefreshPlan::cancel() {
    running.reset();
    queuedFresh = false;
}

} // namespace orvan
