#pragma once
// The crash-report hand-over: the companion posts one report at a time; the simulator keeps what it
// took so that tests can read it back with GET on the same path (no real bridge serves that read).

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::DiagnosticsRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::DiagnosticsRoutes
