#pragma once
// Everything the simulator holds in memory; the server keeps it behind one lock.

#include "Misbehaviour.h"
#include "State.h"

#include <optional>

namespace orvan::sim {

struct Sim {
    State state;
    Misbehaviour misbehaviour;
    // Set when a test asked the simulator to end, with the status to end with.
    std::optional<int> exitCode;
};

} // namespace orvan::sim
