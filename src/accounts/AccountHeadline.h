#pragma once
// The short form of an account's use that comes with its row in the list.

#include "accounts/PlanMeter.h"
#include "accounts/UsageCounts.h"
#include "accounts/UsageTally.h"

#include <optional>
#include <string>

namespace orvan {

struct AccountHeadline {
    std::optional<PlanMeter> meter;
    std::optional<UsageTally> tally;
    std::optional<std::string> note;
    std::optional<std::string> checked;
    UsageCounts week;

    bool operator==(const AccountHeadline&) const = default;
    // Every key loose; fails only for a value that isn't an object.
    static std::optional<AccountHeadline> decode(const Json& j);
};

} // namespace orvan
