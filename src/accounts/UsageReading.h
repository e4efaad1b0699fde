#pragma once
// What a row of the accounts list says about its use: the one headline it shows, how fresh the
// reading is, and the bars and lines drawn from it.

#include "accounts/AccountRowModel.h"
#include "accounts/AccountWords.h"
#include "accounts/ReadinessWords.h"
#include "accounts/UsageWords.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

struct UsageHeadline {
    struct Nothing {
        bool operator==(const Nothing&) const = default;
    };
    // A meter, a tally, a vendor's note, or nothing to show.
    std::variant<PlanMeter, UsageTally, std::string, Nothing> value = Nothing{};
    bool operator==(const UsageHeadline&) const = default;
};

struct UsageReading {
    UsageHeadline headline;
    std::optional<std::string> checked;
    ReadinessFreshness::Freshness freshness = ReadinessFreshness::Freshness::unknown;
    std::optional<std::string> line;
};

// One plan meter as a bar: how full, how worried, and its line.
struct MeterBar {
    double fraction = 0;
    UsageWords::Level level = UsageWords::Level::room;
    std::string label; // the meter's window
    std::string line;
    static MeterBar of(const PlanMeter& meter, TimePoint now, const AccountWords::Place& place);
};

namespace AccountsListing {
UsageHeadline headline(const AccountRowModel& row);
bool isReady(const CompanionAccount& account);
std::optional<std::string> week(const AccountRowModel& row);
// Turns were counted with no token data at all, so the counts understate the use.
bool bareNote(const AccountRowModel& row);
UsageReading reading(const AccountRowModel& row, TimePoint now, const AccountWords::Place& place);
} // namespace AccountsListing

namespace AccountUsageLines {
// The headline as one line, the week's counts, and when it was checked: those that exist.
std::vector<std::string> lines(const AccountRowModel& row, TimePoint now, const AccountWords::Place& place);
} // namespace AccountUsageLines

} // namespace orvan
