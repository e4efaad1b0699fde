#pragma once
// The Appearance section of the main window: the scheme picker, then every palette with its
// swatch, name, credit and state, which a click uses for both sides and whose Light and Dark
// buttons use for one side alone.

#include "appearance/ThemeStore.h"
#include "ui/Node.h"

namespace orvan::AppearanceSection {

// The section's title; the main window lists it under this name.
inline constexpr const char* title = "Appearance";

ui::Node build(ThemeStore& store);

// The section as a terminal needs it: the palettes' swatches and links become one picker that
// uses the chosen palette for both sides, and a line says so when the two sides differ.
void compact(ui::Node& section, ThemeStore& store);

} // namespace orvan::AppearanceSection
