#include "computers/ComputersSection.h"

#include "accounts/Accounts.h"
#include "computers/AddComputerSheet.h"
#include "computers/HostSetupSheet.h"
#include "computers/HostSignInSheetView.h"

#include "computers/HostBridge.h"
#include "computers/HostSandboxRow.h"
#include "computers/SudoSheet.h"

namespace orvan::ComputersSection {

namespace {

ui::Node bridgeBlock(Hosts& hosts, ComputersViewState& state, const CompanionHost& host,
                     const std::function<void()>& changed) {
    ui::Nodes lines;
    if (auto words = host.bridgeLine(hosts.bridge)) {
        const bool older = host.older.value_or(false);
        lines.push_back(ui::text(*words)
                            .tone(older ? ui::Tone::Warning : ui::Tone::Dim)
                            .style(older ? ui::TextStyle::Body : ui::TextStyle::Caption)
                            .help("The version of the bridge on that computer, as Check last read it.")
                            .key("bridge"));
    }
    if (host.forTerminal() || !host.older.value_or(false)) return ui::vstack(std::move(lines)).key("bridgeBlock");
    Hosts* model = &hosts;
    ComputersViewState* s = &state;
    const std::string target = host.target;
    lines.push_back(ui::button(HostBridge::button,
                               [s, target, changed] {
                                   s->updating = target;
                                   if (changed) changed();
                               })
                        .enabled(hosts.working.count(target) == 0)
                        .help(HostBridge::help(hosts.bridge))
                        .key("update"));
    if (state.updating == target) {
        const CompanionHost copy = host;
        lines.push_back(ui::confirmation(HostBridge::question(host.name), HostBridge::warning,
                                         {ui::button(HostBridge::button,
                                                     [model, s, copy, changed] {
                                                         s->updating.reset();
                                                         if (changed) changed();
                                                         spawn(model->updateBridge(copy));
                                                     })
                                              .role(ui::Role::Primary),
                                          ui::button("Cancel",
                                                     [s, changed] {
                                                         s->updating.reset();
                                                         if (changed) changed();
                                                     })
                                              .role(ui::Role::Cancel)})
                            .key("updateQuestion"));
    }
    return ui::vstack(std::move(lines)).key("bridgeBlock");
}

ui::Node removeBlock(Hosts& hosts, ComputersViewState& state, const CompanionHost& host,
                     const std::function<void()>& changed) {
    Hosts* model = &hosts;
    ComputersViewState* s = &state;
    const std::string target = host.target;
    const bool terminal = host.forTerminal();
    ui::Nodes lines{ui::button("Remove",
                               [s, target, changed] {
                                   s->removing = target;
                                   if (changed) changed();
                               })
                        .role(ui::Role::Destructive)
                        .enabled(!hosts.busy)
                        .help(terminal ? "Ends its shells, takes this Mac's key off it if the companion put one there, "
                                         "and forgets the computer here. Your phone stops listing it."
                                       : "Stops the bridge there and deletes it, with the accounts copied to it, takes "
                                         "this Mac's key off it if the companion put one there, and forgets the "
                                         "computer here. Your phone stops listing it.")
                        .key("remove")};
    if (state.removing == target) {
        const CompanionHost copy = host;
        lines.push_back(
            ui::confirmation("Remove this computer?",
                             terminal ? "Its shells end, and this Mac's key comes off it if the companion put one there."
                                      : "Its bridge stops and is deleted from it, with the accounts copied to it, and "
                                        "this Mac's key comes off it if the companion put one there. Sessions there "
                                        "are not touched.",
                             {ui::button("Remove",
                                         [model, s, copy, changed] {
                                             s->removing.reset();
                                             if (changed) changed();
                                             spawn(model->remove(copy));
                                         })
                                  .role(ui::Role::Destructive),
                              ui::button("Cancel",
                                         [s, changed] {
                                             s->removing.reset();
                                             if (changed) changed();
                                         })
                                  .role(ui::Role::Cancel)})
                .key("removeQuestion"));
    }
    return ui::vstack(std::move(lines)).key("removeBlock");
}

void openSetup(Hosts& hosts, ComputersViewState& state, Accounts& accounts, const CompanionHost& host, HostSetup::Part part,
               const std::function<void()>& changed) {
    ComputersViewState* s = &state;
    auto sheet = std::make_shared<HostSetupSheet>(hosts, accounts, HostSetup{host, part}, [s, changed] {
        s->settingUp.reset();
        if (changed) changed();
    });
    sheet->changed = changed;
    state.settingUp = sheet;
    if (changed) changed();
    spawn(sheet->open());
}

ui::Node setupButtons(Hosts& hosts, ComputersViewState& state, const CompanionHost& host,
                      const ComputersServices& services, const std::function<void()>& changed) {
    Hosts* model = &hosts;
    ComputersViewState* s = &state;
    Accounts* accounts = services.accounts;
    const CompanionHost copy = host;
    auto opener = [=](HostSetup::Part part) {
        return [=] {
            if (accounts) openSetup(*model, *s, *accounts, copy, part, changed);
        };
    };
    return ui::hstack({
        ui::button("Install agents…", opener(HostSetup::Part::agents))
            .enabled(accounts != nullptr)
            .help("Installs Claude Code, Codex, Grok, Cursor or Gemini there, each with its maker's own installer, and "
                  "Node.js when they need it.")
            .key("installAgents"),
        ui::button("Copy accounts…", opener(HostSetup::Part::accounts))
            .enabled(accounts != nullptr)
            .help("Copies this Mac's accounts there over its SSH connection, so threads there run on them.")
            .key("copyAccounts"),
    }).key("setupButtons");
}

ui::Node card(Hosts& hosts, ComputersViewState& state, const CompanionHost& host, const std::function<void()>& changed,
              const ComputersServices& services) {
    ui::Nodes lines{bridgeBlock(hosts, state, host, changed)};
    if (!host.forTerminal()) lines.push_back(setupButtons(hosts, state, host, services, changed));
    if (!host.forTerminal())
        lines.push_back(HostSignInSheetView::opener(hosts, state, host, services.desktop, services.clipboard, changed));
    // Nothing is installed on a Terminal only computer, so it has no sandboxes to speak of.
    if (!host.forTerminal()) lines.push_back(HostSandboxRow::build(hosts, host));
    lines.push_back(removeBlock(hosts, state, host, changed));
    // A card of its own, as the connections' paths have, so each computer's buttons stay with it.
    return ui::section(host.name, host.line(), std::move(lines)).key("host:" + host.target);
}

ui::Node addButton(Hosts& hosts, ComputersViewState& state, const ComputersServices& services,
                   const std::function<void()>& changed) {
    Hosts* model = &hosts;
    ComputersViewState* s = &state;
    ComputersServices given = services;
    return ui::button("Add a computer…",
                      [model, s, given, changed] {
                          if (!given.accounts) return;
                          // A fresh sheet starts from nothing found and no words of earlier work.
                          model->clearWork();
                          model->clearFound();
                          s->adding = std::make_shared<AddComputerSheet>(
                              *model, *given.accounts, ComputerForm::startingAs(given.userName), [s, changed] {
                                  s->adding.reset();
                                  if (changed) changed();
                              });
                          s->adding->changed = changed;
                          if (changed) changed();
                      })
        .enabled(services.accounts != nullptr && !state.adding)
        .help("Add a computer by its host name or address, as an SSH client does.")
        .key("addComputer");
}

} // namespace

ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed, const ComputersServices& services) {
    ui::Nodes rows{
        ui::text("Any computer with an SSH server, Linux, macOS or FreeBSD, can run agents for your phone too, and "
                 "keeps going while this Mac sleeps.")
            .tone(ui::Tone::Dim)
            .style(ui::TextStyle::Caption),
        ui::text("Your phone opens a shell on any of them, through this Mac: Terminal, on the computer's card. One "
                 "added as Terminal only, Windows too, gets nothing installed.")
            .tone(ui::Tone::Dim)
            .style(ui::TextStyle::Caption),
    };
    rows.push_back(addButton(hosts, state, services, changed));
    for (const auto& host : hosts.hosts) rows.push_back(card(hosts, state, host, changed, services));
    rows.push_back(SudoSheet::build(hosts, state, changed));
    const std::string home = services.accounts ? services.accounts->userHome : std::string();
    rows.push_back(AddComputerSheetView::build(state.adding, services.files, home, changed));
    rows.push_back(HostSetupSheetView::build(state.settingUp, changed));
    rows.push_back(HostSignInSheetView::present(state, changed));
    return ui::section(title, std::move(rows)).key("computers");
}

} // namespace orvan::ComputersSection
