#pragma once
#include "bridge/GuestScope.h"

#include <optional>
#include <string>

namespace orvan {

// One paired phone (or browser). Only `id` is required; the rest is read loosely.
struct CompanionPhone {
    std::string id;
    std::optional<std::string> name;
    std::optional<std::string> role;
    std::optional<GuestScope> guest;
    std::optional<std::string> ownerSince;

    bool operator==(const CompanionPhone&) const = default;
    static std::optional<CompanionPhone> decode(const Json& j);
};

} // namespace orvan
