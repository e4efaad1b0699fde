#pragma once
#include "foundation/Time.h"

#include <algorithm>
#include <chrono>

namespace orvan {

// Spaces relaunches of a bridge that keeps dying: 2, 4, 8, 16, 32, then 60 seconds from each attempt.
struct RestartBackoff {
    static constexpr std::chrono::milliseconds first{2000};
    static constexpr std::chrono::milliseconds most{60000};

    TimePoint next = distantPast();
    std::chrono::milliseconds delay = first;

    bool take(TimePoint now) {
        if (now < next) return false;
        next = now + delay;
        delay = std::min(delay * 2, most);
        return true;
    }
    void reset() {
        next = distantPast();
        delay = first;
    }
};

} // namespace orvan
