#pragma once
// The join paths of the local API and the few things read from their answers.

#include "foundation/Json.h"
#include "phones/JoinRequest.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan::JoinApprovals {

inline constexpr const char* path = "/local/joins";
inline constexpr const char* changed =
    "That request changed since it was shown: the code below is the one to check now.";

std::string approve(const std::string& id);
std::string deny(const std::string& id);
// Exactly what the owner was shown, so the bridge can refuse an answer to a request that changed.
Json body(const JoinRequest& join);
// The bridge's reason word in "error"; absent when the body doesn't decode.
std::optional<std::string> refusal(std::string_view data);

} // namespace orvan::JoinApprovals
