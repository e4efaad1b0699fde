#pragma once
// What the lid row and the menu say.

namespace orvan::LidWords {

inline constexpr const char* sleeps = "Closing the lid puts this Mac to sleep.";
inline constexpr const char* low = "Battery is low, so closing the lid can sleep this Mac again.";
inline constexpr const char* held = "This Mac keeps running with the lid closed, as long as Orvan Companion is open. "
                                    "Leave it out of a bag.";
inline constexpr const char* refused = "macOS did not allow the lid to stay awake.";

inline constexpr const char* rowTitle = "Stay on when closed";
inline constexpr const char* rowHelp = "Keeps this Mac running with the lid closed while Orvan Companion is open, so "
                                       "agents keep working. It lets go when the battery runs low.";
inline const char* menu(bool on) { return on ? "Stay on when closed" : "Sleep when the lid closes"; }

} // namespace orvan::LidWords
