#include "connections/TunnelState.h"

namespace orvan {

std::optional<TunnelState> TunnelState::decode(const Json& j) {
    TunnelState s;
    Fields f(j);
    f.loose("hostname", s.hostname, "")
        .loose("token", s.token, false)
        .loose("status", s.status, "")
        .loose("reason", s.reason, "")
        .loose("quick", s.quick, false)
        .loose("quickStatus", s.quickStatus, "")
        .loose("quickURL", s.quickURL, "")
        .loose("quickReason", s.quickReason, "")
        .loose("tailscale", s.tailscale, std::vector<std::string>{})
        .loose("origin", s.origin, "");
    return f.result(std::move(s));
}

} // namespace orvan
