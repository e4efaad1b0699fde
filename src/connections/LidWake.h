#pragma once
// Keeps this computer running with its lid closed, for as long as the program is open, through the
// system's power lock. One per process: the program's own ending calls `release` unconditionally.

#include "platform/Power.h"

#include <vector>

namespace orvan {

class LidWake {
public:
    explicit LidWake(Power& power) : power_(power) {}

    // Whether closing the lid sleeps the machine. On Linux the lock that keeps it up on lid close
    // is the same one that holds off idle sleep, so this is that lock; answers whether the call worked.
    bool setClamshell(bool asleepOnClose);
    // Answers whether the machine now stays up with the lid closed.
    bool engage();
    void release();
    // On battery, not charging, and under a fifth full. Anything unreadable is never too low.
    bool batteryTooLow();
    static bool batteryTooLow(const std::vector<PowerSource>& sources);

    // Whether the idle-sleep part of the hold is in force.
    bool asserted() const { return asserted_; }

private:
    Power& power_;
    bool asserted_ = false;
};

} // namespace orvan
