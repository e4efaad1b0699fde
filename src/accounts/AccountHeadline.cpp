#include "accounts/AccountHeadline.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<AccountHeadline> AccountHeadline::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    AccountHeadline h;
    Fields f(j);
    f.loose("meter", h.meter);
    f.loose("tally", h.tally);
    h.note = LooseRead::text(j, "note");
    h.checked = LooseRead::text(j, "checked");
    auto week = j.find("week");
    if (week != j.end()) h.week = UsageCounts::read(*week);
    return h;
}

} // namespace orvan
