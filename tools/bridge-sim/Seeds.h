#pragma once
// The states the simulator can start from.

#include "Rfc3339.h"

#include <optional>
#include <string>

namespace orvan::sim {

enum class Seed { demo, empty };

struct State;

namespace Seeds {
std::optional<Seed> named(const std::string& name);
State make(Seed seed, TimePoint now);
} // namespace Seeds

} // namespace orvan::sim
