#pragma once
// One of a vendor's plan meters, as a share of the plan used.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct PlanMeter {
    std::string name;
    double usedPercent = 0;
    std::optional<std::string> resetsAt;

    bool operator==(const PlanMeter&) const = default;
    // Fails, alone, when `usedPercent` is not a finite number: a meter without a number.
    static std::optional<PlanMeter> decode(const Json& j);
};

} // namespace orvan
