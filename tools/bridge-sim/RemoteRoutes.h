#pragma once
// The remote desktops' family of the local API: the list, a test, an add and a removal.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::RemoteRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::RemoteRoutes
