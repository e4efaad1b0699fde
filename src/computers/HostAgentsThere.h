#pragma once
// What a computer already has of the agents and of Node.js, as its bridge looked just now.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct HostAgentsThere {
    std::optional<std::string> os;
    std::vector<std::string> agents;
    bool node = false;

    bool operator==(const HostAgentsThere&) const = default;
    // Every key alone: missing or of another type is its default, so a half-read answer still helps.
    static std::optional<HostAgentsThere> decode(const Json& j);
};

} // namespace orvan
