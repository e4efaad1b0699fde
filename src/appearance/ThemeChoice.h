#pragma once
// Which palette draws the light appearance and which the dark one. An id that the catalog doesn't
// know (a stored value from a newer or older release, a typo in a defaults file) becomes the
// fallback palette, so a choice always names a palette that exists.

#include "appearance/ThemePalette.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan {

struct ThemeChoice {
    std::string light;
    std::string dark;

    ThemeChoice();
    ThemeChoice(std::optional<std::string_view> light, std::optional<std::string_view> dark);

    static bool known(std::string_view id);

    const ThemePalette& palette(bool isDark) const;
    const ThemeTones& tones(bool isDark) const;

    static ThemeChoice both(std::string_view id);
    ThemeChoice withLight(std::string_view id) const;
    ThemeChoice withDark(std::string_view id) const;

    bool operator==(const ThemeChoice&) const = default;
};

} // namespace orvan
