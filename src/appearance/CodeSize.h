#pragma once
// The point size of code and terminal text. A stored value may be anything a hand or another
// program put there, so every read goes through `clamp`.

#include <optional>

namespace orvan::CodeSize {

inline constexpr int floor = 11;
inline constexpr int ceiling = 24;
inline constexpr int standard = 13;

// Absent, not finite, zero or negative: the standard size. Otherwise the nearest whole number,
// held between the floor and the ceiling.
int clamp(std::optional<double> value);
// What to add to a base size so that it follows the setting; nothing for an unusable setting.
int start(std::optional<double> setting);

} // namespace orvan::CodeSize
