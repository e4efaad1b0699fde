#pragma once
// A moment a vendor's limit stopped a thread.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct UsageLimitHit {
    std::string at;
    std::optional<std::string> resetsAt;
    std::optional<std::string> text;

    bool operator==(const UsageLimitHit&) const = default;
    // Fails when `at` is missing or empty: a limit with no time.
    static std::optional<UsageLimitHit> decode(const Json& j);
};

} // namespace orvan
