#pragma once
// A small picture of a palette for its row in the Appearance section: the light side on the
// left, the dark side on the right, each as bands of its ground, card, accent and ink. Made as
// PNG bytes here so that both renderers can show it without knowing about palettes.

#include "appearance/ThemePalette.h"

#include <memory>
#include <string>

namespace orvan::Swatch {

inline constexpr int width = 48;
inline constexpr int height = 16;

// Encoded once per set of colours and shared by every render that shows it.
std::shared_ptr<const std::string> png(const ThemePalette& palette);

} // namespace orvan::Swatch
