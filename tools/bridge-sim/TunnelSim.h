#pragma once
// The simulated bridge's other paths to this computer: a tunnel on the owner's domain that starts
// and then comes up (or is refused for a bad token), a quick tunnel with a made-up address, and a
// tailnet address found on its own. The token goes in and never comes back out.

#include "Reply.h"
#include "Rfc3339.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace orvan::sim {

struct TunnelSim {
    std::string hostname;
    // Kept only to tell a refused token apart; never written into an answer.
    std::string token;
    std::optional<TimePoint> saved;
    bool quick = false;
    std::optional<TimePoint> quickSince;

    nlohmann::json read(TimePoint now) const;
    Reply write(const nlohmann::json& body, TimePoint now);
};

} // namespace orvan::sim
