#pragma once
// Which pixels of a PNG are dark: enough to draw a pixelated picture (a QR code) as text without
// a GUI library. The bytes come from the bridge, so every length is checked and the sizes are
// capped; anything unexpected (interlacing, a broken chunk, a picture too big) gives nothing.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace orvan::ui {

struct DarkPixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> dark; // row by row, 1 for a dark opaque pixel

    bool at(int x, int y) const { return dark[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] != 0; }
};

inline constexpr int maxPngSide = 4096;

std::optional<DarkPixels> readPngDarkness(std::string_view png);

} // namespace orvan::ui
