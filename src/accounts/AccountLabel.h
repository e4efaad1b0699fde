#pragma once
// The rule for an account's label: 1 to 40 user-perceived characters once trimmed.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvan::AccountLabel {

inline constexpr std::size_t most = 40;
inline constexpr const char* refused = "A label is 1 to 40 characters.";

// The label to send, or absent when it is empty or too long.
std::optional<std::string> clean(std::string_view text);

} // namespace orvan::AccountLabel
