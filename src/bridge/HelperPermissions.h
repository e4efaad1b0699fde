#pragma once
#include "foundation/Json.h"

#include <optional>

namespace orvan {

// What the bridge's helper process has been granted.
struct HelperPermissions {
    std::optional<bool> screen;
    std::optional<bool> input;

    bool operator==(const HelperPermissions&) const = default;
    static std::optional<HelperPermissions> decode(const Json& j);
};

} // namespace orvan
