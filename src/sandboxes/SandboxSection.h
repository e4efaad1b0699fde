#pragma once
// The main window's Sandboxes section: what runs sandboxes here and the shared image, each
// session's sandbox with Stop and Discard, desktop mode for the agents, and the setup sheet.

#include "sandboxes/Sandboxes.h"
#include "sandboxes/SandboxesViewState.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::SandboxSection {

inline constexpr const char* title = "Sandboxes";

ui::Node build(Sandboxes& sandboxes, SandboxesViewState& state, std::function<void()> changed);

} // namespace orvan::SandboxSection
