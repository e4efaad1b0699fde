#pragma once
// Which sheet a computer's card opened: its agents, or its accounts.

#include "computers/CompanionHost.h"

#include <string>

namespace orvan {

struct HostSetup {
    enum class Part { agents, accounts };
    CompanionHost host;
    Part part = Part::agents;

    std::string id() const { return host.target + (part == Part::agents ? "|agents" : "|accounts"); }
};

} // namespace orvan
