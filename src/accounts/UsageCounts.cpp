#include "accounts/UsageCounts.h"

#include "accounts/LooseRead.h"

#include <cmath>

namespace orvan {

UsageCounts UsageCounts::read(const Json& j) {
    UsageCounts c;
    if (!j.is_object()) return c;
    c.turns = LooseRead::count<int>(j, "turns");
    c.tokens = LooseRead::count<std::int64_t>(j, "tokens");
    c.durationMs = LooseRead::count<std::int64_t>(j, "durationMs");
    c.bareTurns = LooseRead::count<int>(j, "bareTurns");
    std::optional<double> cost;
    Fields(j).loose("costUSD", cost);
    if (cost) c.costUSD = std::isfinite(*cost) && *cost > 0 ? *cost : 0.0;
    return c;
}

} // namespace orvan
