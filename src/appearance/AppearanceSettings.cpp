#include "appearance/AppearanceSettings.h"

#include "appearance/ThemeKeys.h"

namespace orvan {

AppearanceSettings AppearanceSettings::read(const Lookup& lookup) {
    AppearanceSettings settings;
    if (auto raw = lookup(std::string(Appearance::key)))
        settings.scheme = Appearance::from(*raw).value_or(Appearance::system);
    const auto light = lookup(ThemeKeys::light);
    const auto dark = lookup(ThemeKeys::dark);
    settings.choice = ThemeChoice(light ? std::optional<std::string_view>(*light) : std::nullopt,
                                  dark ? std::optional<std::string_view>(*dark) : std::nullopt);
    return settings;
}

std::vector<std::pair<std::string, std::string>> AppearanceSettings::stored() const {
    return {{std::string(Appearance::key), std::string(scheme.rawValue())},
            {ThemeKeys::light, choice.light},
            {ThemeKeys::dark, choice.dark}};
}

} // namespace orvan
