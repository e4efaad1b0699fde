#pragma once
#include "foundation/Time.h"

#include <string>

namespace orvan::GuestWords {

inline const std::string ended = "ended";

// The time a guest has left: minutes and hours round up, the last day rounds to the nearest.
std::string ends(TimePoint date, TimePoint now);

} // namespace orvan::GuestWords
