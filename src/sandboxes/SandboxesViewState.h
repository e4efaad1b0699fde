#pragma once
// What the Sandboxes section and its setup sheet remember between renders.

#include <optional>
#include <string>

namespace orvan {

struct SandboxesViewState {
    // The saved sandbox whose discarding waits for the owner's yes, by session.
    std::optional<std::string> discarding;
    // The setup sheet is open.
    bool settingUp = false;
};

} // namespace orvan
