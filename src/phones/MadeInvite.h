#pragma once
// The bridge's invites: the one just made, and those not used yet. Every key is read loosely, so
// one odd field costs only that field; an invite without an id is no invite.

#include "bridge/GuestScope.h"
#include "foundation/Json.h"
#include "foundation/Time.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct MadeInvite {
    std::string id;
    std::string link;
    std::string kind;
    std::optional<TimePoint> expires;

    bool operator==(const MadeInvite&) const = default;
    static std::optional<MadeInvite> decode(const Json& j);
    static std::optional<MadeInvite> read(std::string_view body);
};

struct LiveInvite {
    std::string id;
    std::string name;
    std::string role;
    std::string kind;
    std::optional<TimePoint> expires;
    std::optional<GuestScope> guest;

    bool operator==(const LiveInvite&) const = default;
    static std::optional<LiveInvite> decode(const Json& j);
    // The `invites` list, bad rows stepped over; an absent list is empty, a body that doesn't
    // decode is nothing, so the shown list stays as it was.
    static std::optional<std::vector<LiveInvite>> list(std::string_view body);
};

} // namespace orvan
