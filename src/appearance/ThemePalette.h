#pragma once
// A named palette with a light and a dark side, and the line that credits its authors.

#include "appearance/ThemeTones.h"

#include <string>

namespace orvan {

struct ThemePalette {
    std::string id;
    std::string name;
    std::string credit;
    ThemeTones light;
    ThemeTones dark;

    const ThemeTones& side(bool isDark) const { return isDark ? dark : light; }
    bool operator==(const ThemePalette&) const = default;
};

} // namespace orvan
