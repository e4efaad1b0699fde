#pragma once
// The words that describe an account row. `AccountWords::date`, the reader of the bridge's times,
// lives with the other time functions in foundation.

#include "accounts/CompanionAccount.h"
#include "foundation/Carryover.h"
#include "foundation/Time.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvan::AccountWords {

inline constexpr std::size_t statusLabelLimit = 60;

// Where and how times are told: an ICU locale id ("de_DE") and a time zone id ("" for the system's).
struct Place {
    std::string locale = "en_US";
    std::string timeZone;
};

// From LC_ALL, else LC_TIME, else LANG ("de_DE.UTF-8@euro" reads "de_DE"); "C" and "POSIX" read "en_US".
Place placeFrom(const Environment& environment);

// The locale's form of an ICU skeleton ("jmm", "EEEMMMd") in the place's time zone; "" when ICU can't.
std::string formatted(TimePoint when, const Place& place, const char* skeleton);
bool sameDay(TimePoint a, TimePoint b, const Place& place);
// Noon of a calendar day ("yyyy-MM-dd", Gregorian) in the place's time zone; absent for other text.
std::optional<TimePoint> calendarDay(const std::string& text, const Place& place);

std::string kind(const std::string& kind);
std::string kindLine(const CompanionAccount& account);
// For a Bedrock row only; "" for the others.
std::string bedrockModel(const CompanionAccount& account);
std::string position(const std::string& id, const std::vector<std::string>& chain);
std::string detail(const CompanionAccount& account, const std::vector<std::string>& chain);
std::string keyButton(const CompanionAccount& account);
// The advice under a row's readiness, told without a place.
std::optional<std::string> readinessDetail(const std::string& status, const std::string& provider,
                                           const std::string& kind);

// A point in time in the user's words: the locale's form of "jmm" on the same day as `now`,
// "EEEjmm" within the next six days, "MMMdjmm" otherwise.
std::string time(TimePoint when, TimePoint now, const Place& place);
std::string status(const std::string& status, const std::string& until, const std::string& kind, TimePoint now,
                   const Place& place);
// The first moment after `now` at which `status` would read differently with the time alone (a
// limit's day becoming today, or coming within six days); absent when it never will.
std::optional<TimePoint> statusChangesAt(const std::string& status, const std::string& until, TimePoint now,
                                         const Place& place);

// The sentence above the Remove confirmation.
std::string removal(const CompanionAccount& account, const std::string& accountsFolder, const std::string& userHome);

} // namespace orvan::AccountWords
