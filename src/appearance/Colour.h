#pragma once
// A colour as views use it: 24-bit RGB and an opacity. Also the measures that say whether text
// can be read on a background.

#include "appearance/ThemeTones.h"

#include <cstdint>
#include <string>

namespace orvan {

struct Colour {
    Rgb rgb = 0;
    std::uint8_t alpha = 255;

    int red() const { return static_cast<int>((rgb >> 16) & 0xff); }
    int green() const { return static_cast<int>((rgb >> 8) & 0xff); }
    int blue() const { return static_cast<int>(rgb & 0xff); }

    // "#rrggbb", lower case; opacity is left out.
    std::string hex() const;
    // Relative luminance, 0 for black to 1 for white, as the web's accessibility guidelines define it.
    double luminance() const;
    // The contrast ratio of two opaque colours, 1 to 21, in either order.
    static double contrast(Colour a, Colour b);

    bool operator==(const Colour&) const = default;
};

} // namespace orvan
