#include "foundation/Async.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvan {

struct Cancel::State {
    bool cancelled = false;
    int nextId = 1;
    std::vector<std::pair<int, std::function<void()>>> callbacks;
};

Cancel::Cancel() : state_(std::make_shared<State>()) {}

void Cancel::cancel() {
    if (state_->cancelled) return;
    state_->cancelled = true;
    auto callbacks = std::exchange(state_->callbacks, {});
    for (auto& [id, callback] : callbacks) callback();
}

bool Cancel::cancelled() const { return state_->cancelled; }

int Cancel::onCancel(std::function<void()> callback) {
    if (state_->cancelled) {
        callback();
        return 0;
    }
    int id = state_->nextId++;
    state_->callbacks.emplace_back(id, std::move(callback));
    return id;
}

void Cancel::forget(int id) {
    std::erase_if(state_->callbacks, [&](const auto& c) { return c.first == id; });
}

} // namespace orvan
