#include "accounts/AccountsSection.h"

#include "accounts/AccountDetailSheet.h"
#include "accounts/AccountProvider.h"
#include "accounts/AccountWords.h"
#include "accounts/AddAccountSheet.h"
#include "accounts/ReadinessWords.h"
#include "accounts/PortableToken.h"
#include "accounts/AccountsListing.h"
#include "accounts/UsageReading.h"
#include "accounts/UsageWords.h"

#include <algorithm>

namespace orvan::AccountsSection {

namespace {

constexpr const char* lead =
    "Logins and API keys for the agents this Mac runs directly: Claude, Codex, Grok, Cursor and Gemini, and Claude "
    "on Amazon Bedrock. Your iPhone picks one for a thread.";
constexpr const char* helpWithAccount = "Opens its plan and use, and signs in again, renames, rekeys or removes it.";
constexpr const char* helpWithoutAccount =
    "This Mac's own login, which threads use when they pick no account. Opens its plan and use, and Add as account.";
constexpr const char* waitingWords = "Finish signing in in Terminal, then come back here.";

std::string rowTitle(const AccountRowModel& row) {
    if (row.account && !row.account->label.empty()) return row.account->label;
    return AccountProviders::name(row.provider);
}

// The meters the row has read, else the one its list row came with.
std::vector<PlanMeter> meters(const AccountRowModel& row) {
    if (!row.usage.meters.empty()) return row.usage.meters;
    if (row.account && row.account->usage && row.account->usage->meter) return {*row.account->usage->meter};
    return {};
}

} // namespace

ui::Nodes rowWords(const Accounts& accounts, const AccountRowModel& row, TimePoint now) {
    ui::Nodes words;
    if (row.account) {
        const auto& a = *row.account;
        words.push_back(ui::text(AccountWords::detail(a, accounts.chain)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
        words.push_back(ui::text(AccountWords::status(a.status, a.until, a.kind, now, accounts.place))
                            .tone(a.status == "ready" ? ui::Tone::Good : ui::Tone::Warning)
                            .style(ui::TextStyle::Caption));
        if (a.isBedrock()) words.push_back(ui::text(AccountWords::bedrockModel(a)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
        if (auto advice = ReadinessWords::detail(a.status, a.provider, a.kind, {ReadinessWords::ReadinessPlace::Kind::thisMac, ""}))
            words.push_back(ui::text(*advice).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("advice"));
    } else {
        words.push_back(ui::text(AccountProviders::name(row.provider) + " · " + UsageWords::macLogin)
                            .tone(ui::Tone::Dim)
                            .style(ui::TextStyle::Caption));
    }
    for (const auto& meter : meters(row)) {
        MeterBar bar = MeterBar::of(meter, now, accounts.place);
        words.push_back(ui::progress(bar.fraction, bar.label).key("meter:" + meter.name));
        auto at = meter.resetsAt ? AccountWords::date(*meter.resetsAt) : std::nullopt;
        if (auto resets = UsageWords::resets(at, now, accounts.place))
            words.push_back(ui::text(*resets)
                                .tone(bar.level == UsageWords::Level::room ? ui::Tone::Dim : ui::Tone::Warning)
                                .style(ui::TextStyle::Caption));
    }
    if (meters(row).empty()) {
        auto reading = AccountsListing::reading(row, now, accounts.place);
        if (reading.line) words.push_back(ui::text(*reading.line).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    }
    if (auto week = AccountsListing::week(row))
        words.push_back(ui::text(*week).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("week"));
    return words;
}

ui::Node build(Accounts& accounts, AccountsViewState& state, TimePoint now, std::function<void()> changed,
               std::optional<TimePoint>* wordsChange) {
    Accounts* model = &accounts;
    AccountsViewState* s = &state;
    ui::Nodes rows;
    auto listing = AccountsListing::rows(accounts.list, accounts.usage);
    if (!accounts.loaded) {
        rows.push_back(ui::text("Waiting for this Mac's bridge to list its accounts.").tone(ui::Tone::Dim).key("waiting"));
    } else if (listing.empty()) {
        rows.push_back(ui::text("No account yet. Agents use this Mac's own logins.").tone(ui::Tone::Dim).key("empty"));
    }
    for (const auto& row : listing) {
        if (wordsChange && row.account) {
            auto changes = AccountWords::statusChangesAt(row.account->status, row.account->until, now, accounts.place);
            if (changes && (!*wordsChange || *changes < **wordsChange)) *wordsChange = changes;
        }
        ui::Nodes lines;
        std::string id = row.id;
        lines.push_back(ui::button(rowTitle(row),
                                   [s, id, changed] {
                                       s->opened = id;
                                       s->renaming = false;
                                       s->removing = false;
                                       if (changed) changed();
                                   })
                            .help(row.account ? helpWithAccount : helpWithoutAccount)
                            .key("open"));
        for (auto& words : rowWords(accounts, row, now)) lines.push_back(std::move(words));
        if (accounts.waiting.count(row.id)) lines.push_back(ui::text(waitingWords).tone(ui::Tone::Accent));
        if (accounts.making.count(row.id)) lines.push_back(ui::text(PortableToken::waiting).tone(ui::Tone::Accent));
        if (auto note = accounts.rowNote.find(row.id); note != accounts.rowNote.end())
            lines.push_back(ui::text(note->second).tone(ui::Tone::Danger).key("rowNote"));
        rows.push_back(ui::vstack(std::move(lines)).key("account:" + row.id));
    }
    if (!accounts.note.empty()) rows.push_back(ui::text(accounts.note).tone(ui::Tone::Danger).key("note"));
    rows.push_back(ui::hstack({
        ui::button("Add an account…",
                   [model, s, changed] {
                       AddAccountSheet::open(*s, *model);
                       if (changed) changed();
                   })
            .enabled(!accounts.busy)
            .key("add")
            .help("Adopt a login already on this Mac, sign in with a new one in Terminal, add an API key, or use "
                  "Claude on Amazon Bedrock."),
        ui::button(accounts.usageBusy ? "Checking…" : "Check again", [model] { model->readUsage(true); })
            .enabled(!accounts.usageBusy)
            .help("Asks each vendor for its plan meters now, unless this Mac asked in the last half minute.")
            .key("checkAgain"),
    }).key("actions"));
    if (!accounts.usageNote.empty()) rows.push_back(ui::text(accounts.usageNote).tone(ui::Tone::Danger).key("usageNote"));
    rows.push_back(AccountDetailSheet::build(accounts, state, now, changed));
    rows.push_back(AddAccountSheet::build(accounts, state, changed));
    return ui::section(title, lead, std::move(rows)).footer(UsageWords::planFooter).key("accounts");
}

} // namespace orvan::AccountsSection
