#pragma once
// The user-default keys of the program's look. The sibling desktop program reads and writes the
// same keys, so their spelling is fixed.

namespace orvan::ThemeKeys {

inline constexpr const char* light = "orvan.theme.light";
inline constexpr const char* dark = "orvan.theme.dark";
inline constexpr const char* textSize = "orvan.textSize";
inline constexpr const char* codeSize = "orvan.codeSize";
inline constexpr const char* terminalFollows = "orvan.terminalFollowsTheme";
inline constexpr const char* diffColors = "orvan.diffColors";

} // namespace orvan::ThemeKeys
