#include "computers/HostAgentsThere.h"

namespace orvan {

std::optional<HostAgentsThere> HostAgentsThere::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    HostAgentsThere there;
    Fields(j).loose("os", there.os).loose("agents", there.agents, std::vector<std::string>{}).loose("node", there.node, false);
    return there;
}

} // namespace orvan
