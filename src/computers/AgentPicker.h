#pragma once
// The agents a computer lacks, each with a tick, and Node.js, ticked and held while something
// chosen needs it.

#include "computers/HostAgentsThere.h"
#include "ui/Node.h"

#include <functional>
#include <set>
#include <string>

namespace orvan::AgentPicker {

// `tick` is told a name and whether it is now chosen.
ui::Node build(const HostAgentsThere& there, const std::set<std::string>& chosen,
               std::function<void(const std::string&, bool)> tick);

} // namespace orvan::AgentPicker
