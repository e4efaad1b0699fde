#pragma once
// The short word for an account's readiness, as its row shows it.

#include "foundation/Time.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan::ReadinessWords {

// A vendor's odd word that reads like one of the known labels becomes "Unknown status", so that it
// can't pass for a known state.
std::string label(std::string_view status, std::string_view kind, const std::optional<std::string>& limitedUntil);

// Where an account or agent lives, as a detail line names it.
struct ReadinessPlace {
    enum class Kind { computer, thisMac, unknown };
    Kind kind = Kind::unknown;
    std::string name; // a computer's
    std::string phrase() const;
};

// The second line under a readiness label; none for a status that needs no advice.
std::optional<std::string> detail(std::string_view status, std::string_view provider, std::string_view kind,
                                  const ReadinessPlace& place);

} // namespace orvan::ReadinessWords

namespace orvan::ReadinessFreshness {

inline constexpr double freshSeconds = 300;
inline constexpr double retainedSeconds = 3600;
enum class Freshness { fresh, stale, unknown };
Freshness freshness(const std::optional<std::string>& checked, TimePoint now);

} // namespace orvan::ReadinessFreshness
