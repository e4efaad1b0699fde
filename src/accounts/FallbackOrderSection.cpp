#include "accounts/FallbackOrderSection.h"

#include "accounts/AccountProvider.h"
#include "accounts/AccountWords.h"
#include "accounts/FallbackOrder.h"

namespace orvan::FallbackOrderSection {

namespace {
constexpr const char* terms =
    "Automatic switching moves only to another vendor, an API key or Amazon Bedrock. Switching between two "
    "subscriptions of one vendor is up to you, and some vendors' terms forbid using several accounts to get around "
    "limits.";

// Every change goes out the same way: the new chain with the current switch, or the other way round.
void save(Accounts& accounts, std::vector<std::string> chain, bool autoSwitch) {
    spawn(accounts.saveOrder(std::move(chain), autoSwitch));
}

std::string rowTitle(const CompanionAccount& account) {
    return account.label.empty() ? AccountProviders::name(account.provider) : account.label;
}
} // namespace

ui::Node build(Accounts& accounts) {
    Accounts* m = &accounts;
    const auto cleaned = FallbackOrder::clean(accounts.chain, accounts.list);
    ui::Nodes rows;
    const auto included = FallbackOrder::included(accounts.chain, accounts.list);
    if (included.empty())
        rows.push_back(ui::text("Nothing is in the order yet. Turn an account on below to add it.")
                           .tone(ui::Tone::Dim)
                           .key("emptyOrder"));
    ui::Nodes order;
    for (const auto& account : included) {
        const std::string id = account.id;
        const auto up = FallbackOrder::stepped(cleaned, id, -1);
        const auto down = FallbackOrder::stepped(cleaned, id, 1);
        order.push_back(ui::row(rowTitle(account), AccountWords::kindLine(account),
                               {
                                   ui::button("Move up", [m, up] { save(*m, up, m->autoSwitch); })
                                       .enabled(up != cleaned)
                                       .key("up"),
                                   ui::button("Move down", [m, down] { save(*m, down, m->autoSwitch); })
                                       .enabled(down != cleaned)
                                       .key("down"),
                                   ui::toggle("In the fallback order", true,
                                              [m, cleaned, id](bool on) {
                                                  save(*m, FallbackOrder::including(cleaned, id, on), m->autoSwitch);
                                              })
                                       .help("Turn off to leave it out of automatic switching.")
                                       .key("in"),
                               })
                           .help("Drag to reorder.")
                           .key("order:" + id));
    }
    if (!order.empty())
        rows.push_back(ui::vstack(std::move(order))
                           .reorder([m, cleaned](int from, int to) {
                               save(*m, FallbackOrder::moved(cleaned, {from}, to), m->autoSwitch);
                           })
                           .key("order"));
    for (const auto& account : FallbackOrder::excluded(accounts.chain, accounts.list)) {
        const std::string id = account.id;
        rows.push_back(ui::row(rowTitle(account), AccountWords::kindLine(account),
                               {ui::toggle("In the fallback order", false,
                                           [m, cleaned, id](bool on) {
                                               save(*m, FallbackOrder::including(cleaned, id, on), m->autoSwitch);
                                           })
                                    .help("Turn on to add it to the end of the order.")
                                    .key("in")})
                           .key("out:" + id));
    }
    rows.push_back(ui::toggle("Switch automatically when a limit hits", accounts.autoSwitch,
                              [m](bool on) {
                                  save(*m, FallbackOrder::clean(m->chain, m->list), on);
                              })
                       .help("When a thread's account hits its usage limit, the thread continues on the first ready "
                             "account in the order.")
                       .key("autoSwitch"));
    if (!accounts.orderNote.empty()) rows.push_back(ui::text(accounts.orderNote).tone(ui::Tone::Danger).key("orderNote"));
    rows.push_back(ui::text(terms).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("terms"));
    return ui::section(title, std::move(rows)).footer(FallbackOrder::footer).key("fallback");
}

} // namespace orvan::FallbackOrderSection
