#pragma once
// The accounts family of the local API: the list, its changes, and the slow usage read.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::AccountsRoutes {

// How long a usage read holds its answer unless a test says otherwise: the vendors are slow.
inline constexpr double usageSeconds = 2.0;

bool owns(const std::string& path);
// `path` may carry the query ("?fresh=1").
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::AccountsRoutes
