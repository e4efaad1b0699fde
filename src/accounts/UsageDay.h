#pragma once
// One calendar day of direct use, with the limits hit on it.

#include "accounts/UsageCounts.h"
#include "accounts/UsageLimitHit.h"

#include <string>
#include <vector>

namespace orvan {

struct UsageDay {
    std::string day; // "yyyy-MM-dd"
    UsageCounts counts;
    std::vector<UsageLimitHit> limits;

    bool operator==(const UsageDay&) const = default;
    // Fails when `day` is missing or empty: a day with no date. The counts sit beside `day`.
    static std::optional<UsageDay> decode(const Json& j);
};

} // namespace orvan
