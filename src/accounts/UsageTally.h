#pragma once
// Tokens and calls counted by a cloud vendor over a span, per model or for all of them.

#include "foundation/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvan {

struct UsageTally {
    std::string span;
    std::optional<std::string> model;
    std::string name; // the model when unnamed, "All models" when neither is given
    std::int64_t inputTokens = 0;
    std::int64_t outputTokens = 0;
    std::int64_t invocations = 0;

    bool operator==(const UsageTally&) const = default;
    // Fails when `span` is missing or empty: a tally without a span.
    static std::optional<UsageTally> decode(const Json& j);
};

} // namespace orvan
