#pragma once
// The main window's Connections section: the owner's own domain with its token, the quick tunnel,
// and the tailnet address, each with the bridge's state in words.

#include "connections/ConnectionsViewState.h"
#include "connections/Tunnel.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::ConnectionsSection {

inline constexpr const char* title = "Connections";

ui::Node build(Tunnel& tunnel, ConnectionsViewState& state, std::function<void()> changed);

} // namespace orvan::ConnectionsSection
