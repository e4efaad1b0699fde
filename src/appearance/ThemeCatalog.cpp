#include "appearance/ThemeCatalog.h"

#include "appearance/ThemeCatalogData.h"

#include <map>
#include <string>

namespace orvan::ThemeCatalog {

namespace {

// Only authors we can name with certainty are named; the others are thanked as a group.
const std::map<std::string, std::string, std::less<>>& credits() {
    static const std::map<std::string, std::string, std::less<>> lines = {
        {"orvan", "Orvan's own colours, made for this program."},
        {"dracula", "After the Dracula theme, by Zeno Rocha and its contributors."},
        {"nord", "After the Nord palette, by Arctic Ice Studio."},
        {"catppuccin", "After Catppuccin, Latte and Mocha, by the Catppuccin community."},
        {"solarized", "After Solarized, by Ethan Schoonover."},
        {"tokyo-night", "After the Tokyo Night theme, with thanks to its authors."},
        {"github", "After the colours of GitHub's own light and dark themes."},
        {"grove", "A forest-green palette made for Orvan."},
        {"ember", "A warm, wood-fire palette made for Orvan."},
    };
    return lines;
}

std::vector<ThemePalette> build() {
    std::vector<ThemePalette> palettes;
    for (const auto& entry : ThemeCatalogData::entries()) {
        auto credit = credits().find(entry.id);
        palettes.push_back({.id = entry.id,
                            .name = entry.name,
                            .credit = credit == credits().end() ? std::string() : credit->second,
                            .light = entry.light,
                            .dark = entry.dark});
    }
    return palettes;
}

} // namespace

const std::vector<ThemePalette>& all() {
    static const std::vector<ThemePalette> palettes = build();
    return palettes;
}

const ThemePalette* find(std::string_view id) {
    for (const auto& palette : all())
        if (palette.id == id) return &palette;
    return nullptr;
}

const ThemePalette& palette(std::string_view id) {
    if (const auto* found = find(id)) return *found;
    return *find(fallback);
}

} // namespace orvan::ThemeCatalog
