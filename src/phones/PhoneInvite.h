#pragma once
// The invite paths of the local API, and two small tests on what comes back.

#include "bridge/CompanionPhone.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::PhoneInvite {

inline constexpr const char* make = "/local/invite";
inline constexpr const char* code = "/local/invite.png";
inline constexpr const char* live = "/local/invites";
inline constexpr const char* scope = "/local/scope";
// The longest name sent, in user-perceived characters.
inline constexpr std::size_t most = 40;

std::string png(const std::string& id);
std::string cancel(const std::string& id);
bool isPNG(std::string_view data);
// The first phone that wasn't there when the invite was made, in list order.
std::optional<CompanionPhone> joined(const std::vector<CompanionPhone>& phones, const std::set<std::string>& before);

} // namespace orvan::PhoneInvite
