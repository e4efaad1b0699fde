#pragma once
// A pixelated picture as Unicode half blocks: one character per module across, two modules per
// line down, so the modules come out near square in a terminal cell. Dark modules are drawn in
// the terminal's foreground; `invert` swaps that for terminals whose text is light on dark.

#include "ui/PngPixels.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan::ui {

struct Modules {
    int columns = 0;
    int rows = 0;
    std::vector<std::uint8_t> dark; // row by row

    bool at(int x, int y) const { return dark[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(x)] != 0; }
};

// The module grid of a picture drawn as square blocks of one size (a code scaled up without
// smoothing), cut to its dark parts; nothing when the pixels are not such a grid.
std::optional<Modules> modulesOf(const DarkPixels& pixels);

// The lines of the drawing, with `quiet` light modules around the grid.
std::vector<std::string> halfBlocks(const Modules& modules, int quiet, bool invert);

inline constexpr int quietModules = 2;

} // namespace orvan::ui
