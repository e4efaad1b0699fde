#pragma once
// An Amazon Bedrock account's settings; every value reads as "" when missing or of another type.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct CompanionBedrock {
    std::string region;
    std::string model;
    std::string auth; // "apikey", "keys" or "profile"
    std::string profile;

    bool operator==(const CompanionBedrock&) const = default;
    static std::optional<CompanionBedrock> decode(const Json& j);
};

} // namespace orvan
