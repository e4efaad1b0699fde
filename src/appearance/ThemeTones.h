#pragma once
// One side of a palette: the colours every view and the terminal draw with, each a 24-bit RGB
// value (0xRRGGBB). The field order is the order of the palette tables, which the generated
// catalog relies on.

#include <array>
#include <cstdint>

namespace orvan {

using Rgb = std::uint32_t;

struct ThemeTones {
    Rgb bg = 0;
    Rgb card = 0;
    Rgb well = 0;
    Rgb line = 0;
    Rgb ink = 0;
    Rgb dim = 0;
    Rgb accent = 0;
    Rgb steel = 0;
    Rgb good = 0;
    Rgb danger = 0;
    Rgb onAccent = 0;
    Rgb surface2 = 0;
    Rgb accentSoft = 0;
    Rgb dangerSoft = 0;
    Rgb codeBg = 0;
    Rgb termBg = 0;
    Rgb termFg = 0;
    Rgb termCursor = 0;
    Rgb termSelection = 0;
    Rgb diffAdd = 0;
    Rgb diffDel = 0;
    // Terminal colours 0 to 15: the eight normal colours, then their bright forms.
    std::array<Rgb, 16> ansi{};

    bool operator==(const ThemeTones&) const = default;
};

} // namespace orvan
