#include "accounts/AccountDetailSheet.h"

#include "accounts/AccountProvider.h"
#include "accounts/AccountSheets.h"
#include "accounts/AddAccountSheet.h"
#include "accounts/PortableToken.h"
#include "accounts/UsageReading.h"
#include "accounts/AccountWords.h"
#include "accounts/AccountsListing.h"
#include "accounts/AccountsSection.h"

#include <algorithm>

namespace orvan::AccountDetailSheet {

namespace {

Task<void> saveLabel(Accounts& accounts, AccountsViewState& state, std::string id, std::function<void()> changed) {
    bool saved = co_await accounts.rename(id, state.draft);
    // Kept open on failure, with the row's note under the field.
    if (saved) state.renaming = false;
    if (changed) changed();
}

Task<void> removeAccount(Accounts& accounts, CompanionAccount account, std::function<void()> changed) {
    co_await accounts.remove(std::move(account));
    if (changed) changed();
    // The last usage read still holds the removed account's meters, which would stand as a row of
    // their own until the next read; read them again now.
    if (accounts.note.empty()) co_await accounts.refreshAll(false);
}

Task<void> signIn(Accounts& accounts, CompanionAccount account, std::function<void()> changed) {
    co_await accounts.signIn(std::move(account));
    if (changed) changed();
}

Task<void> makeToken(Accounts& accounts, CompanionAccount account, std::function<void()> changed) {
    co_await accounts.makeToken(std::move(account));
    if (changed) changed();
}

// The login a row without an account stands for, as the add sheet adopts it.
FoundLogin loginOf(const Accounts& accounts, const AccountRowModel& row) {
    for (const auto& login : accounts.found)
        if (login.id() == row.id) return login;
    return FoundLogin{row.provider, "", true, true};
}

ui::Node button(std::string title, std::string help, bool enabled, std::function<void()> action) {
    return ui::button(std::move(title), std::move(action)).help(std::move(help)).enabled(enabled);
}

// The changes a row offers besides renaming and removing.
ui::Nodes actions(Accounts& accounts, AccountsViewState& state, const AccountRowModel& row, std::function<void()> changed) {
    Accounts* model = &accounts;
    AccountsViewState* s = &state;
    ui::Nodes out;
    const bool idle = !accounts.busy;
    if (!row.account) {
        FoundLogin login = loginOf(accounts, row);
        out.push_back(button("Add as account",
                             "Keeps this login as an account, for threads to pick and for the fallback order.", idle,
                             [model, s, login, changed] {
                                 *s = AccountsViewState{};
                                 AddAccountSheet::open(*s, *model, login);
                                 if (changed) changed();
                             }));
        return out;
    }
    const CompanionAccount account = *row.account;
    const std::string provider = AccountProviders::name(account.provider);
    if (account.isLogin() && account.status != "not_installed")
        out.push_back(button(account.status == "needs_login" ? "Sign in" : "Sign in again",
                             "Opens Terminal with " + provider +
                                 "'s sign-in for this account's login. Finish there, then come back here.",
                             idle, [model, account, changed] { spawn(signIn(*model, account, changed)); })
                          .key("signIn"));
    if (account.kind == "apikey" || account.bedrockKeyed()) {
        const bool keys = account.isBedrock() && account.bedrock && account.bedrock->auth == "keys";
        out.push_back(button(AccountWords::keyButton(account),
                             keys ? "Saves this account's AWS credentials in this Mac's Keychain. Saved credentials are "
                                    "never shown."
                                  : "Saves a key in this Mac's Keychain for this account. A saved key is never shown.",
                             idle,
                             [s, changed] {
                                 s->clearKeys();
                                 s->keying = true;
                                 if (changed) changed();
                             })
                          .key("key"));
    }
    if (PortableToken::applies(account) && !account.portable && account.status != "not_installed") {
        const bool making = accounts.making.count(account.id) > 0;
        out.push_back(button(PortableToken::make, PortableToken::help, !making,
                             [model, account, changed] { spawn(makeToken(*model, account, changed)); })
                          .key("token"));
    }
    if (account.isBedrock())
        out.push_back(button("Region and model…",
                             "Changes the AWS Region this account runs Claude in, and the model its threads start on.",
                             idle,
                             [s, account, changed] {
                                 BedrockSettingsSheet::open(*s, account);
                                 if (changed) changed();
                             })
                          .key("bedrock"));
    return out;
}

} // namespace

ui::Node build(Accounts& accounts, AccountsViewState& state, TimePoint now, std::function<void()> changed) {
    if (!state.opened) return ui::nothing();
    Accounts* model = &accounts;
    AccountsViewState* s = &state;
    auto close = [s, changed] {
        *s = AccountsViewState{};
        if (changed) changed();
    };
    auto listing = AccountsListing::rows(accounts.list, accounts.usage);
    auto row = std::find_if(listing.begin(), listing.end(), [&](const auto& r) { return r.id == *state.opened; });
    if (row == listing.end())
        return ui::sheet("Accounts",
                         {ui::text("This account is no longer on this Mac."),
                          ui::button("Done", close).role(ui::Role::Primary)},
                         close)
            .key("accountDetail");

    if (row->account && state.keying) return AccountKeySheet::build(accounts, state, *row->account, changed);
    if (row->account && state.settingBedrock)
        return BedrockSettingsSheet::build(accounts, state, *row->account, changed);

    ui::Nodes body = AccountsSection::rowWords(accounts, *row, now);
    {
        auto reading = AccountsListing::reading(*row, now, accounts.place);
        if (reading.checked)
            body.push_back(ui::text(*reading.checked)
                               .tone(reading.freshness == ReadinessFreshness::Freshness::fresh ? ui::Tone::Dim
                                                                                                : ui::Tone::Warning)
                               .style(ui::TextStyle::Caption)
                               .key("checked"));
        if (row->usage.plan) body.push_back(ui::text("Plan: " + UsageWords::plan(*row->usage.plan)).tone(ui::Tone::Dim));
        if (!row->usage.id.empty()) {
            body.push_back(ui::text("Today: " + UsageWords::counts(row->usage.today)).tone(ui::Tone::Dim).key("today"));
            for (const auto& day : row->usage.days)
                for (const auto& hit : day.limits)
                    body.push_back(ui::text(UsageWords::day(day.day, now, accounts.place) + ": " +
                                            (hit.text ? *hit.text + " · " : std::string()) +
                                            UsageWords::limit(hit, now, accounts.place))
                                       .tone(ui::Tone::Dim)
                                       .style(ui::TextStyle::Caption));
            body.push_back(ui::text(std::string(UsageWords::threadsFooter) + " " + UsageWords::costFooter)
                               .tone(ui::Tone::Dim)
                               .style(ui::TextStyle::Caption));
        }
    }
    if (row->usage.id.empty())
        body.push_back(ui::text(accounts.usageBusy ? "Reading its usage…"
                                                   : "Its usage has not been read yet. Choose Check again in Accounts.")
                           .tone(ui::Tone::Dim)
                           .style(ui::TextStyle::Caption));
    if (!row->account) {
        body.push_back(ui::text("Threads that pick no account use this login.").tone(ui::Tone::Dim));
        body.push_back(ui::text("The CLI's own login on this Mac.").tone(ui::Tone::Dim));
    } else {
        const CompanionAccount& a = *row->account;
        if (a.portable) {
            body.push_back(ui::text(PortableToken::ready).tone(ui::Tone::Good).key("portable"));
            body.push_back(ui::text("Your iPhone can copy this account to another computer, under Settings, Accounts.")
                               .tone(ui::Tone::Dim));
        }
        if (a.status == "missing_profile")
            body.push_back(ui::text((a.bedrock ? a.bedrock->profile : std::string()) +
                                    " is no longer in ~/.aws/config or ~/.aws/credentials. Add it there again, or add "
                                    "this account again another way.")
                               .tone(ui::Tone::Warning));
        if (accounts.making.count(a.id)) body.push_back(ui::text(PortableToken::waiting).tone(ui::Tone::Accent));
        if (accounts.waiting.count(a.id))
            body.push_back(ui::text("Finish signing in in Terminal, then come back here.").tone(ui::Tone::Accent));
    }
    if (auto note = accounts.rowNote.find(row->id); note != accounts.rowNote.end())
        body.push_back(ui::text(note->second).tone(ui::Tone::Danger).key("rowNote"));
    if (auto line = accounts.signInLine.find(row->id); line != accounts.signInLine.end()) {
        body.push_back(ui::text("No window can open here. To sign in, run this in another shell on this computer:"));
        body.push_back(ui::text(line->second).selectable().style(ui::TextStyle::Monospaced).key("signInLine"));
    }
    if (!accounts.note.empty()) body.push_back(ui::text(accounts.note).tone(ui::Tone::Danger).key("note"));
    {
        ui::Nodes more = actions(accounts, state, *row, changed);
        if (!more.empty()) body.push_back(ui::hstack(std::move(more)).key("changes"));
    }

    std::string title = AccountProviders::name(row->provider);
    if (row->account) {
        const CompanionAccount account = *row->account;
        if (!account.label.empty()) title = account.label;
        std::string id = account.id;
        if (state.renaming) {
            body.push_back(ui::hstack({
                ui::field("account.label", "Label", state.draft, [s](const std::string& text) { s->draft = text; }),
                ui::button("Save", [model, s, id, changed] { spawn(saveLabel(*model, *s, id, changed)); })
                    .role(ui::Role::Primary)
                    .enabled(!accounts.busy),
                ui::button("Cancel",
                           [s, changed] {
                               s->renaming = false;
                               if (changed) changed();
                           })
                    .role(ui::Role::Cancel),
            }).key("renaming"));
        }
        body.push_back(ui::hstack({
            ui::button("Rename",
                       [s, label = account.label, changed] {
                           s->draft = label;
                           s->renaming = true;
                           if (changed) changed();
                       })
                .enabled(!accounts.busy && !state.renaming)
                .help("The label your iPhone shows for this account."),
            ui::button("Remove",
                       [s, changed] {
                           s->removing = true;
                           if (changed) changed();
                       })
                .role(ui::Role::Destructive)
                .enabled(!accounts.busy && !state.removing),
        }).key("actions"));
        if (state.removing) {
            body.push_back(ui::confirmation(
                "Remove this account?", AccountWords::removal(account, accounts.accountsFolder(), accounts.userHome),
                {ui::button("Remove",
                            [model, s, account, changed] {
                                s->removing = false;
                                spawn(removeAccount(*model, account, changed));
                            })
                     .role(ui::Role::Destructive),
                 ui::button("Cancel",
                            [s, changed] {
                                s->removing = false;
                                if (changed) changed();
                            })
                     .role(ui::Role::Cancel)}));
        }
    }
    body.push_back(ui::button("Done", close).role(ui::Role::Primary).key("done"));
    return ui::sheet(title, std::move(body), close).key("accountDetail");
}

} // namespace orvan::AccountDetailSheet
