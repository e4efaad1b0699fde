#pragma once
// The sandbox family of the local API: the whole state in one read, stopping and discarding a
// sandbox, the shared image, what runs sandboxes, and desktop mode for the agents.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::SandboxRoutes {

bool owns(const std::string& path);
// `target` may carry a query: "?uncounted=1" is a test looking without being counted as a read.
Reply answer(Sim& sim, const std::string& method, const std::string& target, const std::string& body, TimePoint now);

} // namespace orvan::sim::SandboxRoutes
