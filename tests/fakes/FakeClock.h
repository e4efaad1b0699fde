#pragma once
#include "foundation/Async.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace orvan::test {

// Virtual time. Nothing moves until `advance`, which wakes sleepers one at a time in the order of
// their wake-up time (ties in the order they began to sleep), setting `now` to each one's time first.
class FakeClock final : public Clock {
public:
    explicit FakeClock(TimePoint start = defaultStart()) : now_(start) {}

    TimePoint now() const override { return now_; }
    Task<bool> sleep(Duration duration, Cancel cancel = {}) override;

    void advance(Duration by);
    // Advances to the next sleeper's time and wakes it (and any due with it). False when nobody sleeps.
    bool step();
    std::size_t sleepers() const { return sleepers_.size(); }
    // Seconds from the start of virtual time, for readable assertions.
    double elapsed() const;

    static TimePoint defaultStart();

private:
    struct Sleeper {
        TimePoint due;
        std::uint64_t order;
        std::shared_ptr<Wakeup> wakeup;
    };
    TimePoint now_;
    TimePoint start_ = now_;
    std::uint64_t nextOrder_ = 0;
    std::vector<Sleeper> sleepers_;
};

} // namespace orvan::test
