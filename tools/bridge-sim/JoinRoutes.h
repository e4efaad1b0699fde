#pragma once
// The join family of the local API: the waiting requests, and approving or denying one with the
// code and fingerprint the owner saw. A request whose code changed meanwhile is refused with 409
// "join_changed", so an answer meant for one phone can't let in another.

#include "Reply.h"
#include "Sim.h"

#include <nlohmann/json.hpp>
#include <string>

namespace orvan::sim::JoinRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

// The control under /_sim/: "join-code" gives a waiting request a new code ({"id": ..., "code":
// "1234"}, the first request and a random code when left out), as a phone that asked again would.
bool ownsControl(const std::string& name);
Reply control(Sim& sim, const std::string& name, const nlohmann::json& body, TimePoint now);

} // namespace orvan::sim::JoinRoutes
