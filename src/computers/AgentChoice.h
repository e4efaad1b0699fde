#pragma once
// Which agents to install on a computer, given what is there and what the owner ticked. Node.js
// goes first whenever something chosen needs it and it isn't there yet, ticked or not.

#include "computers/HostAgent.h"
#include "computers/HostAgentsThere.h"
#include "foundation/Json.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvan::AgentChoice {

// Only Linux and macOS take the makers' installers.
bool installs(const std::optional<std::string>& os);
std::vector<HostAgent> missing(const HostAgentsThere& there);
bool nodeComes(const std::set<std::string>& chosen, const HostAgentsThere& there);
// Names in catalog order, "node" first when it must come.
std::vector<std::string> request(const std::set<std::string>& chosen, const HostAgentsThere& there);
std::string line(const HostAgentsThere& there);
Json body(const std::string& target, const std::vector<std::string>& names, const std::string& password);

// What a test found, read as what is there.
HostAgentsThere fromFound(const std::optional<std::string>& os, const std::vector<std::string>& agents,
                          std::optional<bool> node);

} // namespace orvan::AgentChoice
