#pragma once
// The computers' family of the local API: the list, test, add, remove, check, the Docker install,
// the sandbox desktop there and the bridge's update.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim {
struct SimHost;
} // namespace orvan::sim

namespace orvan::sim::HostRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

// An added computer by its target, for the families that act on one; null when none is added.
const SimHost* added(const std::string& target);

} // namespace orvan::sim::HostRoutes
