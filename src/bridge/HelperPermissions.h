#pragma once
#include "access/AccessKind.h"
#include "foundation/Json.h"

#include <optional>

namespace orvan {

// What the bridge's helper process has been granted.
struct HelperPermissions {
    std::optional<bool> screen;
    std::optional<bool> input;

    // What the helper says of one kind; absent when it says nothing of it.
    std::optional<bool> allows(AccessKind kind) const { return kind == AccessKind::screen ? screen : input; }

    bool operator==(const HelperPermissions&) const = default;
    static std::optional<HelperPermissions> decode(const Json& j);
};

} // namespace orvan
