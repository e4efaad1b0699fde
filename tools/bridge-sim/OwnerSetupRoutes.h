#pragma once
// The owner setup family of the local API: whether a first owner may be set up, the one-time code
// and its QR picture, and its cancellation. The simulator also plays the owner's phone, which takes
// the code when a test says so, and can refuse in every way the bridge does.

#include "Reply.h"
#include "Sim.h"

#include <nlohmann/json.hpp>
#include <string>

namespace orvan::sim::OwnerSetupRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

// The control under /_sim/: "owner-setup" with {"take": true} has the owner's phone use the live
// code; {"refuse": "busy" | "too_many" | "host" | "owner_exists" | "screen_shared" | "failed" | null}
// makes the next makes fail that way; {"cancelFails": n} fails the next n cancels with 500;
// {"noPicture": bool} serves the code's picture as something that isn't a PNG.
bool ownsControl(const std::string& name);
Reply control(Sim& sim, const std::string& name, const nlohmann::json& body, TimePoint now);

} // namespace orvan::sim::OwnerSetupRoutes
