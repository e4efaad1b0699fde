#pragma once
// The sheet where the owner picks what runs sandboxes on this computer, with what each is good at,
// and installs, starts or switches to it.

#include "sandboxes/Sandboxes.h"
#include "sandboxes/SandboxesViewState.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::RuntimeSetupSheet {

inline constexpr const char* title = "How sandboxes run on this Mac";

// Nothing unless the state says the sheet is open.
ui::Node build(Sandboxes& sandboxes, SandboxesViewState& state, std::function<void()> changed);

} // namespace orvan::RuntimeSetupSheet
