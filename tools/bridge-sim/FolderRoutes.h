#pragma once
// The folders a phone may start a direct thread in, and the report on the folders that files from
// a phone go into.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::FolderRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::FolderRoutes
