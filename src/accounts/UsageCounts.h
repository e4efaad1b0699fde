#pragma once
// What direct threads used in a span: turns, tokens, cost and time.

#include "foundation/Json.h"

#include <cstdint>
#include <optional>

namespace orvan {

struct UsageCounts {
    int turns = 0;
    std::int64_t tokens = 0;
    std::optional<double> costUSD;
    std::int64_t durationMs = 0;
    // Turns that came with no token or cost data.
    int bareTurns = 0;

    bool operator==(const UsageCounts&) const = default;
    // Never fails: every field is 0 when absent, bad or negative.
    static UsageCounts read(const Json& j);
    static std::optional<UsageCounts> decode(const Json& j) { return read(j); }
};

} // namespace orvan
