#pragma once
// The scheme and the palette choice as kept in user defaults.

#include "appearance/Appearance.h"
#include "appearance/ThemeChoice.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

struct AppearanceSettings {
    using Lookup = std::function<std::optional<std::string>(const std::string& key)>;

    Appearance scheme = Appearance::system;
    ThemeChoice choice;

    // An unknown scheme reads as `system`; unknown palette ids as the fallback palette, each side
    // on its own.
    static AppearanceSettings read(const Lookup& lookup);
    static AppearanceSettings standard() { return {}; }

    // The keys and texts to write, scheme first.
    std::vector<std::pair<std::string, std::string>> stored() const;

    bool operator==(const AppearanceSettings& other) const {
        return scheme == other.scheme && choice == other.choice;
    }
};

} // namespace orvan
