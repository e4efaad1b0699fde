#include "appearance/CodeSize.h"

#include <algorithm>
#include <cmath>

namespace orvan::CodeSize {

int clamp(std::optional<double> value) {
    if (!value || !std::isfinite(*value) || *value <= 0) return standard;
    // Held as a double first: a huge value must not overflow on its way to an int.
    const double held = std::clamp(std::round(*value), double(floor), double(ceiling));
    return static_cast<int>(held);
}

int start(std::optional<double> setting) { return clamp(setting) - standard; }

} // namespace orvan::CodeSize
