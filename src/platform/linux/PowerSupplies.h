#pragma once
// The kernel's account of power supplies (/sys/class/power_supply), in the terms the lid model asks
// about: the machine's own battery, whether the mains are on, whether it charges, and how full it is.

#include "platform/Power.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace orvan::PowerSupplies {

inline const std::filesystem::path standardFolder = "/sys/class/power_supply";

// Absent when the folder can't be listed. Batteries of attached devices (a mouse, a headset) are left
// out; the first system battery comes first.
std::optional<std::vector<PowerSource>> read(const std::filesystem::path& folder);

} // namespace orvan::PowerSupplies
