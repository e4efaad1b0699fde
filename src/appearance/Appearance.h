#pragma once
// Whether the program looks light, dark, or as the system does. The stored text is shared with
// the sibling desktop program, which is why its key keeps the earlier name.

#include <array>
#include <optional>
#include <string_view>

namespace orvan {

struct Appearance {
    enum Value { system, light, dark };

    static constexpr std::string_view key = "tulm.appearance";

    constexpr Appearance(Value v = system) : value(v) {}
    constexpr operator Value() const { return value; }

    static constexpr std::array<Appearance, 3> all() { return {system, light, dark}; }
    // The stored text, and back; anything else is absent.
    std::string_view rawValue() const;
    static std::optional<Appearance> from(std::string_view raw);
    // What the scheme picker says.
    std::string_view title() const;

    Value value;
};

} // namespace orvan
