#pragma once
#include "foundation/Json.h"
#include "foundation/Time.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

// What a guest may see, as the bridge states it. Every key is read loosely: one odd field costs
// only that field.
struct GuestScope {
    std::vector<std::string> projects;
    std::vector<std::string> sessions;
    std::string mode;
    std::optional<TimePoint> ends;

    bool operator==(const GuestScope&) const = default;
    static std::optional<GuestScope> decode(const Json& j);
};

} // namespace orvan
