#include "fakes/FakeClock.h"

#include <algorithm>

namespace orvan::test {

TimePoint FakeClock::defaultStart() {
    using namespace std::chrono;
    return sys_days(year{2026} / 11 / 22) + hours(9);
}

double FakeClock::elapsed() const {
    return std::chrono::duration<double>(now_ - start_).count();
}

Task<bool> FakeClock::sleep(Duration duration, Cancel cancel) {
    if (cancel.cancelled()) co_return false;
    auto wakeup = std::make_shared<Wakeup>();
    sleepers_.push_back({now_ + std::max(duration, Duration::zero()), nextOrder_++, wakeup});
    int id = cancel.onCancel([this, wakeup] {
        std::erase_if(sleepers_, [&](const Sleeper& s) { return s.wakeup == wakeup; });
        wakeup->fire(false);
    });
    bool slept = co_await *wakeup;
    cancel.forget(id);
    co_return slept;
}

bool FakeClock::step() {
    if (sleepers_.empty()) return false;
    auto earliest = std::min_element(sleepers_.begin(), sleepers_.end(), [](const Sleeper& a, const Sleeper& b) {
        return a.due < b.due || (a.due == b.due && a.order < b.order);
    });
    advance(std::chrono::duration_cast<Duration>(std::max(earliest->due - now_, TimePoint::duration::zero())));
    return true;
}

void FakeClock::advance(Duration by) {
    const TimePoint target = now_ + by;
    for (;;) {
        auto earliest = std::min_element(sleepers_.begin(), sleepers_.end(), [](const Sleeper& a, const Sleeper& b) {
            return a.due < b.due || (a.due == b.due && a.order < b.order);
        });
        if (earliest == sleepers_.end() || earliest->due > target) break;
        Sleeper due = *earliest;
        sleepers_.erase(earliest);
        now_ = std::max(now_, due.due);
        // Waking may start new sleeps; they join the same walk if they fall before the target.
        due.wakeup->fire(true);
    }
    now_ = std::max(now_, target);
}

} // namespace orvan::test
