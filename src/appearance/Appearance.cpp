#include "appearance/Appearance.h"

namespace orvan {

std::string_view Appearance::rawValue() const {
    switch (value) {
    case system: return "system";
    case light: return "light";
    case dark: return "dark";
    }
    return "system";
}

std::optional<Appearance> Appearance::from(std::string_view raw) {
    for (Appearance a : all())
        if (a.rawValue() == raw) return a;
    return std::nullopt;
}

std::string_view Appearance::title() const {
    switch (value) {
    case system: return "System";
    case light: return "Light";
    case dark: return "Dark";
    }
    return "System";
}

} // namespace orvan
