#pragma once
// One sandbox desktop as the bridge lists it: the session it belongs to, its state and whether it
// is saved.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct CompanionSandbox {
    std::string session;
    // "running", "preparing", "starting", "stopped", "failed", or a word this program does not know.
    std::string state;
    // Saved: its disk stays when it stops.
    bool keep = false;
    std::optional<std::vector<std::string>> watching;
    std::optional<std::string> reason;

    static std::optional<CompanionSandbox> decode(const Json& j);
    bool operator==(const CompanionSandbox&) const = default;
};

} // namespace orvan
