#include "phones/OwnerNotices.h"

#include "accounts/AccountWords.h"
#include "foundation/UserDefaults.h"
#include "phones/PhoneWords.h"

#include <algorithm>
#include <cmath>

namespace orvan {

namespace {
// The reference date the stored seconds count from: 2001-01-01 00:00:00 UTC.
constexpr std::chrono::seconds referenceEpoch{978307200};

TimePoint fromReference(double seconds) {
    return TimePoint{} + referenceEpoch +
           std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double>(seconds));
}

double toReference(TimePoint when) {
    return std::chrono::duration<double>(when - (TimePoint{} + referenceEpoch)).count();
}
} // namespace

std::string OwnerNotice::line(TimePoint now, const AccountWords::Place& place) const {
    return name + " became an owner of this Mac at " + AccountWords::time(at, now, place) + ".";
}

Json OwnerNotices::encode() const {
    Json out{{"seen", Json::object()}};
    for (const auto& [id, since] : seen) out["seen"][id] = since;
    if (seenThrough) out["seenThrough"] = toReference(*seenThrough);
    return out;
}

std::optional<OwnerNotices> OwnerNotices::decode(const Json& j) {
    OwnerNotices n;
    std::map<std::string, std::string> seen;
    std::optional<double> through;
    Fields f(j);
    f.required("seen", seen).optional("seenThrough", through);
    if (!f.ok()) return std::nullopt;
    // Years beyond any calendar's reach are as unreadable as text would be.
    if (through && (!std::isfinite(*through) || std::fabs(*through) > 1e11)) return std::nullopt;
    n.seen = std::move(seen);
    if (through) n.seenThrough = fromReference(*through);
    return n;
}

OwnerNotices OwnerNotices::load(const UserDefaults& defaults) {
    auto stored = defaults.value(key);
    if (!stored) return {};
    return decode(*stored).value_or(OwnerNotices{});
}

void OwnerNotices::save(UserDefaults& defaults) const { defaults.set(key, encode()); }

std::pair<OwnerNotices, std::vector<OwnerNotice>> OwnerNotices::look(const std::vector<CompanionPhone>& phones,
                                                                    TimePoint now) const {
    OwnerNotices next = *this;
    if (!seenThrough) {
        next.seenThrough = now;
        return {next, {}};
    }
    std::vector<const CompanionPhone*> owners;
    for (const auto& phone : phones)
        if (phone.role == "owner") owners.push_back(&phone);
    next.seen.clear();
    for (const auto& [id, since] : seen) {
        bool still = std::any_of(owners.begin(), owners.end(),
                                 [&](const CompanionPhone* o) { return o->id == id && o->ownerSince == since; });
        if (still) next.seen.emplace(id, since);
    }
    std::vector<OwnerNotice> notices;
    for (const CompanionPhone* owner : owners) {
        if (!owner->ownerSince) continue;
        auto at = AccountWords::date(*owner->ownerSince);
        if (!at || *at < *seenThrough) continue;
        if (auto it = seen.find(owner->id); it != seen.end() && it->second == *owner->ownerSince) continue;
        notices.push_back(OwnerNotice{owner->id, PhoneWords::shown(*owner), *owner->ownerSince, *at});
    }
    std::stable_sort(notices.begin(), notices.end(), [](const auto& a, const auto& b) { return a.at < b.at; });
    return {next, notices};
}

OwnerNotices OwnerNotices::madeHere(const std::string& id, const std::vector<CompanionPhone>& phones) const {
    OwnerNotices next = *this;
    for (const auto& phone : phones)
        if (phone.id == id && phone.role == "owner" && phone.ownerSince) {
            next.seen[id] = *phone.ownerSince;
            break;
        }
    return next;
}

OwnerNotices OwnerNotices::dismiss(const std::vector<OwnerNotice>& notices) const {
    OwnerNotices next = *this;
    for (const auto& notice : notices) next.seen[notice.id] = notice.since;
    return next;
}

} // namespace orvan
