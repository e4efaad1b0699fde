#include "appearance/Colour.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orvan {

namespace {

double linear(int channel) {
    const double c = channel / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

} // namespace

std::string Colour::hex() const {
    char text[8];
    std::snprintf(text, sizeof text, "#%06x", static_cast<unsigned>(rgb & 0xffffff));
    return text;
}

double Colour::luminance() const {
    return 0.2126 * linear(red()) + 0.7152 * linear(green()) + 0.0722 * linear(blue());
}

double Colour::contrast(Colour a, Colour b) {
    const double la = a.luminance(), lb = b.luminance();
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace orvan
