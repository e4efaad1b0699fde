#pragma once
// The main window's section of the other computers: a card for each, with its line, its bridge,
// its sandboxes and what can be done there, and the sudo question of a Docker install.

#include "computers/ComputersViewState.h"
#include "computers/Hosts.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::ComputersSection {

inline constexpr const char* title = "Other computers";

ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed);

} // namespace orvan::ComputersSection
