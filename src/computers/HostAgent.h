#pragma once
// The coding agents the companion can put on another computer, each with its maker's own installer,
// and Node.js, which three of them need and which goes ahead of them.

#include <set>
#include <string>
#include <vector>

namespace orvan {

struct HostAgent {
    std::string name;
    std::string title;
    std::string how;

    bool operator==(const HostAgent&) const = default;

    // The five agents, in the order they are offered and installed.
    static const std::vector<HostAgent>& catalog();
    // Not an agent: the runtime the agents' adapters start with.
    static const HostAgent& node();
    // Agents that cannot run without Node.js.
    static const std::set<std::string>& needNode();
    // The title of a catalog name or of "node"; an unknown name stays as it is.
    static std::string titleOf(const std::string& name);
};

} // namespace orvan
