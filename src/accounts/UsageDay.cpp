#include "accounts/UsageDay.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<UsageDay> UsageDay::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    auto day = LooseRead::text(j, "day");
    if (!day) return std::nullopt;
    UsageDay d;
    d.day = *day;
    d.counts = UsageCounts::read(j);
    std::optional<Lossy<UsageLimitHit>> limits;
    Fields(j).loose("limits", limits);
    if (limits) d.limits = std::move(limits->items);
    return d;
}

} // namespace orvan
