#include "accounts/AccountsListing.h"
#include "accounts/ReadinessWords.h"
#include "accounts/UsageReading.h"
#include "accounts/UsageWords.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using Level = UsageWords::Level;
using Freshness = ReadinessFreshness::Freshness;

TimePoint at(const char* text) { return *AccountWords::date(text); }
const AccountWords::Place us{"en_US", "Europe/Berlin"};
const AccountWords::Place de{"de_DE", "Europe/Berlin"};

TEST(UsageWordsTest, NumbersInShortWords) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
    struct Percent { double value; Level level; const char* text; double fraction; };
    for (auto c : {Percent{79.9, Level::room, "80%", 0.799}, Percent{80, Level::high, "80%", 0.8},
                   Percent{99.6, Level::high, "100%", 0.996}, Percent{100, Level::full, "100%", 1},
                   Percent{140, Level::full, "140%", 1}, Percent{0.4, Level::room, "<1%", 0.004},
                   Percent{0, Level::room, "0%", 0}, Percent{-3, Level::room, "0%", 0}, Percent{nan, Level::room, "—", 0},
                   Percent{inf, Level::full, "—", 0}}) {
        EXPECT_EQ(UsageWords::level(c.value), c.level) << c.value;
        EXPECT_EQ(UsageWords::percent(c.value), c.text) << c.value;
        EXPECT_DOUBLE_EQ(UsageWords::fraction(c.value), c.fraction) << c.value;
    }
    struct Tokens { std::int64_t n; const char* text; };
    for (auto c : {Tokens{-5, "0"}, Tokens{999, "999"}, Tokens{1000, "1K"}, Tokens{1234, "1.2K"}, Tokens{9949, "9.9K"},
                   Tokens{9950, "10K"}, Tokens{999'499, "999K"}, Tokens{999'500, "1M"}, Tokens{1'250'000, "1.2M"}, Tokens{1'260'000, "1.3M"},
                   Tokens{9'950'000, "10M"}, Tokens{999'499'999, "999M"}, Tokens{999'500'000, "1B"},
                   Tokens{12'340'000'000, "12.3B"}})
        EXPECT_EQ(UsageWords::tokens(c.n), c.text) << c.n;
    EXPECT_EQ(UsageWords::tokenWords(1), "1 token");
    EXPECT_EQ(UsageWords::tokenWords(1234), "1.2K tokens");
    EXPECT_EQ(UsageWords::turns(1), "1 turn");
    EXPECT_EQ(UsageWords::turns(0), "0 turns");
    struct Cost { std::optional<double> value; const char* text; };
    for (auto c : {Cost{std::nullopt, "$0.00"}, Cost{-1, "$0.00"}, Cost{nan, "$0.00"}, Cost{0.004, "<$0.01"},
                   Cost{0.01, "$0.01"}, Cost{12.4, "$12.40"}, Cost{999.994, "$999.99"}, Cost{1234.5, "$1,235"},
                   Cost{1'234'567.4, "$1,234,567"}})
        EXPECT_EQ(UsageWords::cost(c.value), c.text) << c.value.value_or(-99);
    struct Duration { std::int64_t ms; const char* text; };
    for (auto c : {Duration{59'999, "59 s"}, Duration{60'000, "1 min"}, Duration{3'599'999, "59 min"},
                   Duration{3'600'000, "1 h"}, Duration{9'900'000, "2 h 45 min"}, Duration{36'000'000, "10 h"},
                   Duration{36'060'000, "10 h"}})
        EXPECT_EQ(UsageWords::duration(c.ms), c.text) << c.ms;
    for (auto [name, want] : std::vector<std::pair<std::string, std::string>>{
             {"5-hour", "5h"}, {"7-day", "7d"}, {"30-minute", "30m"}, {"weekly", "weekly"}, {"x-hour", "x-hour"},
             {"1.5-hour", "1.5-hour"}})
        EXPECT_EQ(UsageWords::window(name), want);
    EXPECT_EQ(UsageWords::plan("  max "), "Max");
    EXPECT_EQ(UsageWords::fullest({{"a", 10, {}}, {"b", 50, {}}, {"c", 50, {}}})->name, "b");
    EXPECT_FALSE(UsageWords::fullest({}));
}

TEST(UsageWordsTest, CountsWeeksAndTallies) {
    UsageCounts none;
    EXPECT_EQ(UsageWords::counts(none), "No direct threads");
    EXPECT_FALSE(UsageWords::week(none));
    UsageCounts some{41, 1'250'000, 12.4, 0, 0};
    EXPECT_EQ(UsageWords::counts(some), "41 turns · 1.2M tokens · $12.40");
    EXPECT_EQ(*UsageWords::week(some), "This week: 41 turns · 1.2M tokens · $12.40");
    UsageCounts bare{3, 0, std::nullopt, 0, 3};
    EXPECT_EQ(UsageWords::counts(bare), "3 turns");
    UsageTally tally{"7d", "claude-sonnet", "claude-sonnet", 2'400'000, 310'000, 820};
    EXPECT_EQ(UsageWords::tally(tally), "AWS, last claude-sonnet: 2.4M in · 310K out");
}

// Times in the owner's words: the narrow space ICU puts before "PM" is a plain one here, and German
// takes its own forms.
TEST(UsageWordsTest, ResetAndCheckedTimesInTwoLocales) {
    const TimePoint now = at("2026-11-23T10:00:00Z"); // 11:00 in Berlin, a Monday
    struct Case { std::optional<TimePoint> date; const char* en; const char* de; };
    for (const auto& c : std::vector<Case>{
             {std::nullopt, nullptr, nullptr},
             {now - 1s, "has reset", "has reset"},
             {now, "has reset", "has reset"},
             {now + 61s, "resets in 2 min", "resets in 2 min"},
             {now + 3599s, "resets in 60 min", "resets in 60 min"},
             {at("2026-11-23T14:05:00Z"), "resets 3:05 PM", "resets 15:05"},
             {at("2026-11-25T14:05:00Z"), "resets Wed 3:05 PM", "resets Mi., 15:05"},
             {at("2026-12-05T14:05:00Z"), "resets Dec 5", "resets 5. Dez."}}) {
        auto en = UsageWords::resets(c.date, now, us);
        auto german = UsageWords::resets(c.date, now, de);
        EXPECT_EQ(en.value_or("(none)"), c.en ? c.en : "(none)");
        EXPECT_EQ(german.value_or("(none)"), c.de ? c.de : "(none)");
        EXPECT_EQ(en.value_or("").find("\u202F"), std::string::npos);
    }
    struct Checked { const char* text; const char* words; };
    for (auto c : {Checked{"2026-11-23T09:59:30Z", "Checked just now"}, Checked{"2026-11-23T09:15:00Z", "Checked 45 min ago"},
                   Checked{"2026-11-22T12:59:00.250Z", "Checked 21 h ago"}, Checked{"2026-11-20T09:00:00Z", "Checked Nov 20"},
                   Checked{"soon", "(none)"}})
        EXPECT_EQ(UsageWords::checked(std::string(c.text), now, us).value_or("(none)"), c.words) << c.text;
    for (auto [day, words] : std::vector<std::pair<const char*, const char*>>{
             {"2026-11-23", "Today"}, {"2026-11-22", "Yesterday"}, {"2026-11-19", "Thu, Nov 19"}, {"2026-13-40", "2026-13-40"},
             {"yesterday", "yesterday"}})
        EXPECT_EQ(UsageWords::day(day, now, us), words) << day;
    EXPECT_EQ(UsageWords::day("2026-11-19", now, de), "Do., 19. Nov.");
    EXPECT_EQ(UsageWords::meterLine({"5-hour", 37.2, "2026-11-23T10:30:00Z"}, now, us), "37% · resets in 30 min");
    EXPECT_EQ(UsageWords::limit({"2026-11-21T08:00:00Z", "2026-11-21T11:00:00Z", std::nullopt}, now, us),
              "9:00 AM · reset Nov 21, 12:00 PM");
}

TEST(UsageWordsTest, FreshnessReadinessAndTheRowsHeadline) {
    const TimePoint now = at("2026-11-23T10:00:00Z");
    struct Case { std::optional<std::string> checked; Freshness want; };
    for (const auto& c : std::vector<Case>{{std::nullopt, Freshness::unknown}, {"", Freshness::unknown},
                                           {"2026-11-23T09:55:00Z", Freshness::fresh},
                                           {"2026-11-23T09:54:59.900Z", Freshness::stale},
                                           {"2026-11-23T09:00:00Z", Freshness::stale},
                                           {"2026-11-23T08:59:59Z", Freshness::unknown},
                                           {"2026-11-23T10:00:01Z", Freshness::unknown}, {"Monday", Freshness::unknown}})
        EXPECT_EQ(ReadinessFreshness::freshness(c.checked, now), c.want) << c.checked.value_or("(absent)");

    using P = ReadinessWords::ReadinessPlace;
    EXPECT_EQ(*ReadinessWords::detail("not_installed", "claude", "", {P::Kind::thisMac, ""}), "Needs Node.js (npx) on this Mac.");
    EXPECT_EQ(*ReadinessWords::detail("not_installed", "", "", {P::Kind::computer, "  "}), "Needs its command on this computer.");
    EXPECT_EQ(*ReadinessWords::detail("not_installed", "open_code", "", {P::Kind::computer, " box "}), "Needs the Open code command on box.");
    EXPECT_EQ(*ReadinessWords::detail("missing_profile", "claude", "bedrock", {}), "That AWS profile is not on this computer.");
    EXPECT_FALSE(ReadinessWords::detail("ready", "claude", "", {}));
    EXPECT_EQ(ReadinessWords::label("not_ready", "", std::nullopt), "Not ready");
    EXPECT_EQ(ReadinessWords::label("no key yet", "", std::nullopt), "Unknown status");

    AccountRowModel row;
    row.id = "a";
    row.usage.id = "a";
    row.usage.meters = {{"5-hour", 20, {}}, {"7-day", 64, {}}};
    row.usage.week = {0, 0, std::nullopt, 0, 2};
    auto reading = AccountsListing::reading(row, now, us);
    EXPECT_EQ(reading.line.value_or(""), "7d: 64%");
    EXPECT_TRUE(AccountsListing::bareNote(row));
    row.usage.meters.clear();
    row.usage.tallies = {{"7d", std::nullopt, "All models", 1000, 2000, 3}};
    EXPECT_EQ(AccountsListing::reading(row, now, us).line.value_or(""), "AWS, last All models: 1K in · 2K out");
    row.usage.tallies.clear();
    row.usage.note = "  Billed by use. ";
    EXPECT_EQ(AccountsListing::reading(row, now, us).line.value_or(""), "Billed by use.");
    row.usage.note = "  ";
    EXPECT_FALSE(AccountsListing::reading(row, now, us).line);
}

} // namespace
} // namespace orvan
