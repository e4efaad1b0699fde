#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace orvan::InviteLink {

// The link to show, copy or share; nothing for one that is wrong or downgraded. The invite's
// secret lives in the fragment, which never reaches a web server, so the fragment must be there.
std::optional<std::string> shareable(std::string_view text);

} // namespace orvan::InviteLink
