#pragma once
// The pair of colours a diff draws its added and removed lines in. Blue and orange stay apart for
// people who can't tell red from green.

#include <array>
#include <optional>
#include <string_view>

namespace orvan {

struct DiffColors {
    enum Value { redGreen, blueOrange };

    constexpr DiffColors(Value v = redGreen) : value(v) {}
    constexpr operator Value() const { return value; }

    static constexpr std::array<DiffColors, 2> all() { return {redGreen, blueOrange}; }
    std::string_view rawValue() const;
    static std::optional<DiffColors> from(std::string_view raw);
    std::string_view title() const;

    Value value;
};

} // namespace orvan
