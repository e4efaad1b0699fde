#pragma once
// Keeping this machine up with its lid closed, and reading its batteries. The adapter only carries
// out a step; which step comes when, and what counts as a low battery, is the model's business.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// One source of power as the system describes it.
struct PowerSource {
    // "InternalBattery" for the machine's own battery; anything else is not considered.
    std::string type;
    // "AC Power" while the machine runs from the mains.
    std::string state;
    bool charging = false;
    // How full, in the source's own units; absent when it doesn't say.
    std::optional<std::int64_t> current;
    std::optional<std::int64_t> max;

    bool operator==(const PowerSource&) const = default;
};

class Power {
public:
    virtual ~Power() = default;
    // Takes the system's lock against sleeping on lid close, on idle and on request; one held lock is
    // kept, not taken again. Answers whether the lock is held. A lock ends with the process, so a
    // crash never leaves the machine awake.
    virtual bool hold() = 0;
    // Gives the lock back; harmless when none is held.
    virtual void letGo() = 0;
    virtual bool holding() const = 0;
    // Absent when the system can't be asked.
    virtual std::optional<std::vector<PowerSource>> sources() = 0;
};

} // namespace orvan
