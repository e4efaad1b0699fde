#include "accounts/UsageLimitHit.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<UsageLimitHit> UsageLimitHit::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    auto at = LooseRead::text(j, "at");
    if (!at) return std::nullopt;
    return UsageLimitHit{*at, LooseRead::text(j, "resetsAt"), LooseRead::text(j, "text")};
}

} // namespace orvan
