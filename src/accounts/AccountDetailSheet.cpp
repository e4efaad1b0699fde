#include "accounts/AccountDetailSheet.h"

#include "accounts/AccountProvider.h"
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

    ui::Nodes body = AccountsSection::rowWords(accounts, *row, now);
    if (row->usage.id.empty())
        body.push_back(ui::text(accounts.usageBusy ? "Reading its usage…"
                                                   : "Its usage has not been read yet. Choose Check again in Accounts.")
                           .tone(ui::Tone::Dim)
                           .style(ui::TextStyle::Caption));
    if (!row->account) body.push_back(ui::text("Threads that pick no account use this login.").tone(ui::Tone::Dim));
    if (auto note = accounts.rowNote.find(row->id); note != accounts.rowNote.end())
        body.push_back(ui::text(note->second).tone(ui::Tone::Danger).key("rowNote"));
    if (!accounts.note.empty()) body.push_back(ui::text(accounts.note).tone(ui::Tone::Danger).key("note"));

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
