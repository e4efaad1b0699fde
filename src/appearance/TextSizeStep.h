#pragma once
// The steps of the text size setting, smallest first, as the stored text names them.

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace orvan::TextSizeStep {

inline constexpr std::array<std::string_view, 7> all = {"xSmall", "small",   "medium",  "large",
                                                         "xLarge", "xxLarge", "xxxLarge"};
inline constexpr std::string_view standard = "large";

// The text when it names a step; anything else, including a different case, is absent.
std::optional<std::string> clamp(std::optional<std::string_view> text);

} // namespace orvan::TextSizeStep
