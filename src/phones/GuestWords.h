#pragma once
#include "foundation/Time.h"

#include <optional>
#include <string>

namespace orvan::GuestWords {

inline const std::string ended = "ended";

// The time a guest has left: minutes and hours round up, the last day rounds to the nearest.
std::string ends(TimePoint date, TimePoint now);

// The first moment after `now` at which `ends(date, ...)` reads differently; none once it ended.
// A view that shows the phrase asks to be drawn again then, and not before.
std::optional<TimePoint> changesAt(TimePoint date, TimePoint now);

} // namespace orvan::GuestWords
