#include "appearance/ThemeChoice.h"

#include "appearance/ThemeCatalog.h"

namespace orvan {

namespace {

std::string usable(std::optional<std::string_view> id) {
    if (id && ThemeChoice::known(*id)) return std::string(*id);
    return std::string(ThemeCatalog::fallback);
}

} // namespace

ThemeChoice::ThemeChoice() : ThemeChoice(std::nullopt, std::nullopt) {}

ThemeChoice::ThemeChoice(std::optional<std::string_view> light, std::optional<std::string_view> dark)
    : light(usable(light)), dark(usable(dark)) {}

bool ThemeChoice::known(std::string_view id) { return ThemeCatalog::find(id) != nullptr; }

const ThemePalette& ThemeChoice::palette(bool isDark) const { return ThemeCatalog::palette(isDark ? dark : light); }

const ThemeTones& ThemeChoice::tones(bool isDark) const { return palette(isDark).side(isDark); }

ThemeChoice ThemeChoice::both(std::string_view id) { return ThemeChoice(id, id); }

ThemeChoice ThemeChoice::withLight(std::string_view id) const { return ThemeChoice(id, dark); }

ThemeChoice ThemeChoice::withDark(std::string_view id) const { return ThemeChoice(light, id); }

} // namespace orvan
