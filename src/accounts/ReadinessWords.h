#pragma once
// The short word for an account's readiness, as its row shows it.

#include <optional>
#include <string>
#include <string_view>

namespace orvan::ReadinessWords {

// A vendor's odd word that reads like one of the known labels becomes "Unknown status", so that it
// can't pass for a known state.
std::string label(std::string_view status, std::string_view kind, const std::optional<std::string>& limitedUntil);

} // namespace orvan::ReadinessWords
