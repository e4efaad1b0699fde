#include "computers/AccountPicker.h"

#include "computers/AccountCopy.h"

namespace orvan::AccountPicker {

ui::Node build(Accounts& accounts, const std::set<std::string>& chosen, const std::string& computer,
               std::function<void(const std::string&, bool)> tick) {
    ui::Nodes rows;
    if (accounts.loaded) {
        if (accounts.list.empty())
            rows.push_back(ui::text("This Mac has no accounts yet. Add them in Accounts.").tone(ui::Tone::Dim));
        Accounts* model = &accounts;
        for (const auto& account : accounts.list) {
            const std::string id = account.id;
            ui::Nodes row;
            if (AccountCopy::needsToken(account)) {
                const bool making = accounts.making.count(id) > 0;
                const CompanionAccount copy = account;
                row.push_back(ui::text(AccountCopy::line(account)));
                row.push_back(ui::button(making ? "Finish in the browser" : "Make a token",
                                         [model, copy] { spawn(model->makeToken(copy)); })
                                  .key("token"));
                row.push_back(ui::text("A Claude sign-in goes to another computer as a long-lived token, so neither "
                                       "computer signs the other out. This opens the browser on this Mac for one "
                                       "click, signed in to this account. The token stays in this Mac's Keychain "
                                       "until it is copied.")
                                  .tone(ui::Tone::Dim)
                                  .style(ui::TextStyle::Caption));
            } else {
                row.push_back(ui::toggle(AccountCopy::line(account), chosen.count(id) > 0,
                                         [tick, id](bool on) { tick(id, on); })
                                  .key("tick"));
            }
            auto note = accounts.rowNote.find(id);
            if (note != accounts.rowNote.end() && !note->second.empty())
                row.push_back(ui::text(note->second).tone(ui::Tone::Warning).style(ui::TextStyle::Caption));
            rows.push_back(ui::vstack(std::move(row)).key("account:" + id));
        }
        for (const auto& shared : AccountCopy::sharedNotes(chosen, accounts.list))
            rows.push_back(ui::text(shared).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
        rows.push_back(ui::text("Each goes over this Mac's own SSH connection to that computer, and is kept there as a "
                                "copy from your iPhone is: a key in a file only that user can read, a sign-in in a "
                                "folder of its own.")
                           .tone(ui::Tone::Dim)
                           .style(ui::TextStyle::Caption));
    }
    return ui::section("Copy to " + computer, std::move(rows)).key("accountPicker");
}

} // namespace orvan::AccountPicker
