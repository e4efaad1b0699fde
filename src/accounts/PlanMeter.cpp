#include "accounts/PlanMeter.h"

#include "accounts/LooseRead.h"

#include <cmath>

namespace orvan {

std::optional<PlanMeter> PlanMeter::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    PlanMeter m;
    std::optional<double> used;
    Fields(j).loose("usedPercent", used);
    if (!used || !std::isfinite(*used)) return std::nullopt;
    m.usedPercent = *used;
    m.name = LooseRead::plain(j, "name");
    m.resetsAt = LooseRead::text(j, "resetsAt");
    return m;
}

} // namespace orvan
