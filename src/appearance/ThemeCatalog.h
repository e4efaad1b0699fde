#pragma once
// Every palette the program offers, in the order the Appearance section lists them.

#include "appearance/ThemePalette.h"

#include <string_view>
#include <vector>

namespace orvan::ThemeCatalog {

// The palette used for an absent or unknown id.
inline constexpr std::string_view fallback = "orvan";

const std::vector<ThemePalette>& all();
// The palette with this id, or null.
const ThemePalette* find(std::string_view id);
// The palette with this id, or the fallback.
const ThemePalette& palette(std::string_view id);

} // namespace orvan::ThemeCatalog
