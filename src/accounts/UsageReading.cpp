#include "accounts/UsageReading.h"

#include "foundation/Text.h"

namespace orvan {

MeterBar MeterBar::of(const PlanMeter& meter, TimePoint now, const AccountWords::Place& place) {
    return {UsageWords::fraction(meter.usedPercent), UsageWords::level(meter.usedPercent), UsageWords::window(meter.name),
            UsageWords::meterLine(meter, now, place)};
}

namespace AccountsListing {

namespace {
// The row's own read when there is one, else the short form its list row came with.
bool hasUsage(const AccountRowModel& row) { return !row.usage.id.empty(); }
} // namespace

UsageHeadline headline(const AccountRowModel& row) {
    std::vector<PlanMeter> meters;
    std::optional<UsageTally> tally;
    std::optional<std::string> note;
    if (hasUsage(row)) {
        meters = row.usage.meters;
        if (!row.usage.tallies.empty()) tally = row.usage.tallies.front();
        note = row.usage.note;
    } else if (row.account && row.account->usage) {
        const AccountHeadline& h = *row.account->usage;
        if (h.meter) meters.push_back(*h.meter);
        tally = h.tally;
        note = h.note;
    }
    if (auto meter = UsageWords::fullest(meters)) return {*meter};
    if (tally) return {*tally};
    if (note) {
        std::string trimmed = Text::trimmed(*note);
        if (!trimmed.empty()) return {trimmed};
    }
    return {};
}

bool isReady(const CompanionAccount& account) { return account.status == "ready"; }

std::optional<std::string> week(const AccountRowModel& row) {
    if (hasUsage(row)) return UsageWords::week(row.usage.week);
    if (row.account && row.account->usage) return UsageWords::week(row.account->usage->week);
    return std::nullopt;
}

bool bareNote(const AccountRowModel& row) {
    const UsageCounts& c = hasUsage(row) ? row.usage.week
                           : row.account && row.account->usage ? row.account->usage->week
                                                               : row.usage.week;
    return c.bareTurns > 0 && c.tokens == 0 && !(c.costUSD && *c.costUSD > 0);
}

UsageReading reading(const AccountRowModel& row, TimePoint now, const AccountWords::Place& place) {
    UsageReading out;
    out.headline = headline(row);
    std::optional<std::string> checked =
        hasUsage(row) ? row.usage.checked : row.account && row.account->usage ? row.account->usage->checked : std::nullopt;
    out.checked = UsageWords::checked(checked, now, place);
    out.freshness = ReadinessFreshness::freshness(checked, now);
    if (auto* meter = std::get_if<PlanMeter>(&out.headline.value))
        out.line = UsageWords::window(meter->name) + ": " + UsageWords::meterLine(*meter, now, place);
    else if (auto* tally = std::get_if<UsageTally>(&out.headline.value))
        out.line = UsageWords::tally(*tally);
    else if (auto* note = std::get_if<std::string>(&out.headline.value))
        out.line = *note;
    return out;
}

} // namespace AccountsListing

namespace AccountUsageLines {
std::vector<std::string> lines(const AccountRowModel& row, TimePoint now, const AccountWords::Place& place) {
    std::vector<std::string> out;
    auto read = AccountsListing::reading(row, now, place);
    if (read.line) out.push_back(*read.line);
    if (auto week = AccountsListing::week(row)) out.push_back(*week);
    if (read.checked) out.push_back(*read.checked);
    return out;
}
} // namespace AccountUsageLines

} // namespace orvan
