#pragma once
// Points in time as the bridge writes them: UTC, whole seconds, "Z".

#include <chrono>
#include <optional>
#include <string>

namespace orvan::sim {

using TimePoint = std::chrono::system_clock::time_point;

namespace Rfc3339 {
std::string string(TimePoint time);
// Accepts what phones and the companion send: an optional fraction, and "Z" or a numeric offset.
std::optional<TimePoint> parse(const std::string& text);
} // namespace Rfc3339

} // namespace orvan::sim
