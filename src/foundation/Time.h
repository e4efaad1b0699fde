#pragma once
// Points in time as the bridge sends them and as the program sends them back.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {

using TimePoint = std::chrono::system_clock::time_point;
using Duration = std::chrono::milliseconds;

// The earliest point any schedule can name; the start of every "not before" field.
// Two centuries before 1970: far enough for any schedule, near enough that nanosecond arithmetic
// on it can't overflow.
inline constexpr TimePoint distantPast() { return TimePoint{} - std::chrono::hours(24 * 365 * 200); }

namespace AccountWords {
// Reads every point in time the bridge sends: RFC 3339 without, then with, fractional seconds,
// then with any fractional part removed. Empty or unreadable text is absent.
std::optional<TimePoint> date(std::string_view text);
} // namespace AccountWords

namespace RFC3339 {
// UTC, whole seconds: "2026-11-22T19:50:00Z".
std::string string(TimePoint when);
} // namespace RFC3339

} // namespace orvan
