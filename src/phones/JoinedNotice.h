#pragma once
// A device that joined by a QR code, which needed no approval: the owner is told afterwards.

#include "accounts/AccountWords.h"
#include "foundation/Time.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct JoinedNotice {
    std::string name; // trimmed, never empty
    std::string platform;
    std::string role;
    std::optional<TimePoint> at;

    bool operator==(const JoinedNotice&) const = default;

    std::string line(TimePoint now, const AccountWords::Place& place) const;
    // The `joined` rows of a /local/joins answer; empty when the body doesn't decode.
    static std::vector<JoinedNotice> list(std::string_view data);
};

} // namespace orvan
