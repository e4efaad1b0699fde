#pragma once
// The tunnel family of the local API: one path, read with GET and set with POST.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::TunnelRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::TunnelRoutes
