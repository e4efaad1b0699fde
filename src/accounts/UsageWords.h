#pragma once
// Usage records in the owner's words: percentages, token counts, costs, durations, and when a
// meter resets or was last read.

#include "accounts/AccountWords.h"
#include "accounts/PlanMeter.h"
#include "accounts/UsageCounts.h"
#include "accounts/UsageLimitHit.h"
#include "accounts/UsageTally.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvan::UsageWords {

enum class Level { room, high, full };

inline constexpr const char* planFooter =
    "Plan meters come from each vendor, read on this Mac with that login's own sign-in. Turns, tokens and cost count "
    "the direct threads Orvan runs.";
inline constexpr const char* threadsFooter = "Only threads Orvan runs directly count here.";
inline constexpr const char* costFooter = "Cost is what the agent reported.";
inline constexpr const char* macLogin = "This Mac's login";

Level level(double percent);
double fraction(double percent);
std::string percent(double value);
std::optional<PlanMeter> fullest(const std::vector<PlanMeter>& meters);
std::string plan(const std::string& text);
// "5-hour" is "5h", "7-day" "7d", "30-minute" "30m"; any other name stands.
std::string window(const std::string& name);
std::string tokens(std::int64_t n);
std::string tokenWords(std::int64_t n);
std::string turns(int n);
// With the grouping of en_US from a thousand dollars on, whatever the owner's locale.
std::string cost(std::optional<double> value);
std::string duration(std::int64_t ms);
std::optional<std::string> resets(std::optional<TimePoint> date, TimePoint now, const AccountWords::Place& place);
std::optional<std::string> checked(const std::optional<std::string>& text, TimePoint now,
                                   const AccountWords::Place& place);
std::string meterLine(const PlanMeter& meter, TimePoint now, const AccountWords::Place& place);
std::string inOut(const UsageTally& tally);
std::string tally(const UsageTally& tally);
std::string counts(const UsageCounts& counts);
std::optional<std::string> week(const UsageCounts& counts);
std::string day(const std::string& text, TimePoint now, const AccountWords::Place& place);
std::string limit(const UsageLimitHit& hit, TimePoint now, const AccountWords::Place& place);

} // namespace orvan::UsageWords
