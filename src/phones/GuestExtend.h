#pragma once
// Moving a guest's end date: the choices offered, and the new end the bridge is told.

#include "foundation/Json.h"
#include "foundation/Time.h"

#include <array>
#include <optional>
#include <string>

namespace orvan::GuestExtend {

inline constexpr const char* path = "/local/devices/extend";
inline constexpr std::array<int, 3> choices = {1, 7, 30};

std::string label(int days);
// From the present end while it lies ahead, from now once it has passed; days of 86400 seconds.
TimePoint ends(std::optional<TimePoint> current, int days, TimePoint now);
Json body(const std::string& id, TimePoint ends);

} // namespace orvan::GuestExtend
