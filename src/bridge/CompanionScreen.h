#pragma once
#include "bridge/HelperPermissions.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

// Screen sharing as the status tells it. Every field may be absent; the empty record is what a
// status without `screen` counts as.
struct CompanionScreen {
    std::optional<bool> available;
    std::optional<bool> on;
    std::optional<std::vector<std::string>> watching;
    std::optional<std::string> control;
    std::optional<bool> phoneFirst;
    std::optional<HelperPermissions> permissions;

    bool operator==(const CompanionScreen&) const = default;
    static std::optional<CompanionScreen> decode(const Json& j);
};

} // namespace orvan
