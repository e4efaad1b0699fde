#include "accounts/LoginUsage.h"

#include "accounts/LooseRead.h"

namespace orvan {

namespace {
template <class T> std::vector<T> lossy(const Json& j, const char* key) {
    std::optional<Lossy<T>> list;
    Fields(j).loose(key, list);
    return list ? std::move(list->items) : std::vector<T>{};
}

UsageCounts counts(const Json& j, const char* key) {
    auto it = j.find(key);
    return it == j.end() ? UsageCounts{} : UsageCounts::read(*it);
}
} // namespace

std::vector<UsageTally> LoginUsage::talliesFor(const std::string& span) const {
    std::vector<UsageTally> out;
    for (const auto& t : tallies)
        if (t.span == span) out.push_back(t);
    return out;
}

std::optional<LoginUsage> LoginUsage::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    auto id = LooseRead::text(j, "id");
    if (!id) return std::nullopt;
    LoginUsage u;
    u.id = *id;
    u.provider = LooseRead::text(j, "provider").value_or("");
    u.kind = LooseRead::text(j, "kind").value_or("login");
    u.plan = LooseRead::text(j, "plan");
    u.meters = lossy<PlanMeter>(j, "meters");
    u.tallies = lossy<UsageTally>(j, "tallies");
    u.scope = LooseRead::text(j, "scope");
    u.note = LooseRead::text(j, "note");
    u.shared = LooseRead::text(j, "shared");
    u.ledgerNote = LooseRead::text(j, "ledgerNote");
    u.checked = LooseRead::text(j, "checked");
    u.today = counts(j, "today");
    u.week = counts(j, "week");
    u.days = lossy<UsageDay>(j, "days");
    return u;
}

} // namespace orvan
