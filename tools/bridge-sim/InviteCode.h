#pragma once
// The QR picture of an invite link, as the bridge draws it: a PNG of black modules on white,
// each module a square of pixels, with a quiet zone around.

#include <optional>
#include <string>

namespace orvan::sim::InviteCode {

// PNG bytes; nothing when the text is too long for a code.
std::optional<std::string> png(const std::string& text);

} // namespace orvan::sim::InviteCode
