#pragma once
#include "bridge/CompanionPhone.h"
#include "bridge/CompanionScreen.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// The bridge's state, read every two seconds. Strict: a key of the wrong type fails the whole
// record, which the supervisor then treats as no news.
struct CompanionStatus {
    std::optional<std::string> name;
    std::optional<bool> on;
    std::optional<std::string> line;
    std::optional<std::vector<CompanionPhone>> phones;
    std::optional<std::string> sidebar;
    std::optional<std::string> tulm;
    std::optional<CompanionScreen> screen;
    std::optional<bool> diagnostics;
    std::optional<bool> diagnosticsAnswered;

    bool operator==(const CompanionStatus&) const = default;
    static std::optional<CompanionStatus> decode(const Json& j);
    static std::optional<CompanionStatus> read(std::string_view body) { return decodeJson<CompanionStatus>(body); }
};

} // namespace orvan
