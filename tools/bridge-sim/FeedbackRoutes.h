#pragma once
// Reports the companion hands over for the relay. The relay's mood is set by a test through
// /_sim/feedback; the reports taken are read back with GET on the same path (no real bridge
// serves that read).

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::FeedbackRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

bool ownsControl(const std::string& name);
// {"relay": "on" | "off" | "none" | "unpaired"}
Reply control(Sim& sim, const std::string& name, const nlohmann::json& body);

} // namespace orvan::sim::FeedbackRoutes
