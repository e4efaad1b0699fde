#pragma once
// What the bridge says about the paths besides the relay. Every key is read on its own, and one of
// the wrong type counts as missing, so a field the bridge grows or changes never hides the rest.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct TunnelState {
    std::string hostname;
    // Whether a token is stored; the token itself never comes back.
    bool token = false;
    std::string status;
    std::string reason;
    bool quick = false;
    std::string quickStatus;
    std::string quickURL;
    std::string quickReason;
    std::vector<std::string> tailscale;
    std::string origin;

    bool operator==(const TunnelState&) const = default;

    // Absent only when the answer is not a JSON object.
    static std::optional<TunnelState> decode(const Json& j);
};

} // namespace orvan
