#pragma once
// What the Appearance section says.

#include <optional>
#include <string>
#include <string_view>

namespace orvan::AppearanceWords {

inline constexpr const char* line = "How Orvan Companion looks on this Mac. Your iPhone keeps its own choice.";
inline constexpr const char* scheme = "System follows this Mac's light and dark setting.";
inline constexpr const char* themes =
    "Click a theme to use it for light and dark, or its Light or Dark button for that one alone.";

// Which sides a palette is in use for; nothing when neither.
std::optional<std::string> state(bool light, bool dark);
// The help of clicking a palette, and of its Light or Dark button.
std::string both(std::string_view name);
std::string one(std::string_view name, bool dark);

} // namespace orvan::AppearanceWords
