#pragma once
// What the owner at this computer has already been told about other owners. Kept in the user
// defaults, so an owner announced once and dismissed stays quiet across launches.

#include "bridge/CompanionPhone.h"
#include "foundation/Time.h"
#include "phones/OwnerNotice.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

class UserDefaults;

struct OwnerNotices {
    // Owners who became owners before this were here when the program first looked.
    std::optional<TimePoint> seenThrough;
    // Device id to the owner time already dealt with (dismissed, or made on this computer).
    std::map<std::string, std::string> seen;

    bool operator==(const OwnerNotices&) const = default;

    static constexpr const char* key = "ownerNotices.v1";
    // A missing or unreadable value is the empty record: the next look is a first look.
    static OwnerNotices load(const UserDefaults& defaults);
    void save(UserDefaults& defaults) const;
    // `seenThrough` as seconds since 2001-01-01 00:00:00 UTC, left out when absent.
    Json encode() const;
    static std::optional<OwnerNotices> decode(const Json& j);

    std::pair<OwnerNotices, std::vector<OwnerNotice>> look(const std::vector<CompanionPhone>& phones, TimePoint now) const;
    OwnerNotices madeHere(const std::string& id, const std::vector<CompanionPhone>& phones) const;
    OwnerNotices dismiss(const std::vector<OwnerNotice>& notices) const;
};

} // namespace orvan
