#include "ui/qt/ActionDispatcher.h"

namespace orvan::ui::qt {

void ActionDispatcher::run(std::function<void()> call, bool deliberate) {
    if (!call) return;
    if (depth_ > 0) {
        held_.emplace_back(std::move(call), deliberate);
        return;
    }
    // The closure may replace the tree that owned it, or end the window that owns this; both
    // copies keep what is needed alive while it runs.
    const auto self = shared_from_this();
    const auto running = std::move(call);
    if (deliberate) ++actionsRun_;
    running();
    if (afterAction_) {
        const auto hook = afterAction_;
        hook();
    }
}

void ActionDispatcher::endRender() {
    if (depth_ > 0) --depth_;
    if (depth_ > 0) return;
    auto held = std::move(held_);
    held_.clear();
    for (auto& [call, deliberate] : held) run(std::move(call), deliberate);
}

} // namespace orvan::ui::qt
