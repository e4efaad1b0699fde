#pragma once
// What runs sandboxes on this computer, told from the bridge's three words and its choices: which
// choice is installed but stopped, the line that says so, and whether to offer opening it.

#include "sandboxes/RuntimeChoice.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan::SandboxSetup {

inline constexpr const char* openHelp =
    "Sandboxes need Docker Desktop's engine running. This opens Docker Desktop; accept its agreement if it asks, and "
    "sandboxes start once its engine runs.";

// The choice in use (or, with none in use, the first one chosen) when it is installed here but not running.
std::optional<RuntimeChoice> stopped(const std::string& runtime, const std::vector<RuntimeChoice>& choices);
std::optional<std::string> line(const std::string& runtime, const std::string& service, const std::string& docker,
                                bool installing, const std::vector<RuntimeChoice>& choices);
bool offersOpen(const std::string& runtime, const std::string& docker, const std::vector<RuntimeChoice>& choices);
// The state of one card's choice, when it is installed but not running.
std::optional<std::string> cardLine(const RuntimeChoice& choice, const std::string& docker);

} // namespace orvan::SandboxSetup
