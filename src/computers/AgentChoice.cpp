#include "computers/AgentChoice.h"

#include <algorithm>

namespace orvan::AgentChoice {

namespace {
bool holds(const std::vector<std::string>& list, const std::string& name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}
} // namespace

bool installs(const std::optional<std::string>& os) { return os && (*os == "linux" || *os == "darwin"); }

std::vector<HostAgent> missing(const HostAgentsThere& there) {
    std::vector<HostAgent> out;
    for (const auto& agent : HostAgent::catalog())
        if (!holds(there.agents, agent.name)) out.push_back(agent);
    return out;
}

bool nodeComes(const std::set<std::string>& chosen, const HostAgentsThere& there) {
    if (there.node) return false;
    const auto& need = HostAgent::needNode();
    return std::any_of(chosen.begin(), chosen.end(),
                       [&](const std::string& name) { return need.count(name) && !holds(there.agents, name); });
}

std::vector<std::string> request(const std::set<std::string>& chosen, const HostAgentsThere& there) {
    std::vector<std::string> names;
    for (const auto& agent : missing(there))
        if (chosen.count(agent.name)) names.push_back(agent.name);
    if (!there.node && (chosen.count(HostAgent::node().name) || nodeComes(chosen, there)))
        names.insert(names.begin(), HostAgent::node().name);
    return names;
}

std::string line(const HostAgentsThere& there) {
    std::string titles;
    for (const auto& agent : HostAgent::catalog()) {
        if (!holds(there.agents, agent.name)) continue;
        if (!titles.empty()) titles += ", ";
        titles += agent.title;
    }
    if (titles.empty()) return "No coding agents there yet.";
    return "Agents there: " + titles + ".";
}

Json body(const std::string& target, const std::vector<std::string>& names, const std::string& password) {
    Json out = {{"target", target}, {"agents", names}};
    if (!password.empty()) out["password"] = password;
    return out;
}

HostAgentsThere fromFound(const std::optional<std::string>& os, const std::vector<std::string>& agents,
                          std::optional<bool> node) {
    return HostAgentsThere{os, agents, node.value_or(false)};
}

} // namespace orvan::AgentChoice
