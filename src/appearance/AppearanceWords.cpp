#include "appearance/AppearanceWords.h"

namespace orvan::AppearanceWords {

std::optional<std::string> state(bool light, bool dark) {
    if (light && dark) return "In use for light and dark";
    if (light) return "In use for light";
    if (dark) return "In use for dark";
    return std::nullopt;
}

std::string both(std::string_view name) { return "Use " + std::string(name) + " for light and dark."; }

std::string one(std::string_view name, bool dark) {
    return "Use " + std::string(name) + (dark ? " for dark only." : " for light only.");
}

} // namespace orvan::AppearanceWords
