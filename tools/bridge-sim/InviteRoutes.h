#pragma once
// The invite family of the local API: making an invite, its QR picture, the unused invites and
// their cancellation, and what a guest can be given. The simulator also plays the invited phone:
// a QR invite is taken up by itself a few seconds after it was made, and a link invite when a
// test tells a phone to follow it, which leaves a join request waiting for the owner.

#include "Reply.h"
#include "Sim.h"

#include <nlohmann/json.hpp>
#include <string>

namespace orvan::sim::InviteRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& target, const std::string& body, TimePoint now);

// Lets the invited phones join whose time has come; called before every answer.
void settle(Sim& sim, TimePoint now);

// The controls under /_sim/: "invites" sets how the bridge behaves
// ({"older": bool, "link": text or null, "joinAfter": seconds}); "follow" has a phone open a
// link invite ({"id": ..., "name": ...}) and answers the 4-digit code it shows.
bool ownsControl(const std::string& name);
Reply control(Sim& sim, const std::string& name, const nlohmann::json& body, TimePoint now);

// The join requests that followed links, oldest first, as the bridge lists them.
nlohmann::json joins(TimePoint now);

} // namespace orvan::sim::InviteRoutes
