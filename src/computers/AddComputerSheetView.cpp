#include "computers/AccountPicker.h"
#include "computers/AddComputerSheet.h"
#include "computers/AgentChoice.h"
#include "computers/AgentPicker.h"
#include "computers/HostDocker.h"
#include "platform/FilePicker.h"

namespace orvan::AddComputerSheetView {

namespace {

using Sheet = std::shared_ptr<AddComputerSheet>;

const char* const onceHelp = "Used once to put this Mac's own key on the computer. It is not saved.";

std::string kindLine(ComputerForm::SignIn signIn) {
    switch (signIn) {
    case ComputerForm::SignIn::autoSignIn: return "Uses the keys and ~/.ssh/config this Mac's ssh already uses.";
    case ComputerForm::SignIn::key:
        return "The key, and its passphrase if it has one, are used once to put this Mac's own key on the computer. "
               "Nothing secret is saved.";
    case ComputerForm::SignIn::password:
        return "The password is used once to put this Mac's own key on the computer, as ssh-copy-id does. It is not "
               "saved.";
    }
    return "";
}

Task<void> chooseKey(Sheet sheet, FilePicker* files, std::string home, std::function<void()> changed) {
    FileChoice choice;
    choice.kind = FileChoice::Kind::file;
    choice.message = "Choose the private key this computer accepts.";
    choice.start = std::filesystem::path(home) / ".ssh";
    choice.showHidden = true;
    auto path = co_await files->choose(std::move(choice));
    if (!path || sheet->isClosed()) co_return;
    sheet->form.key = path->string();
    if (changed) changed();
}

ui::Node formFields(const Sheet& sheet, FilePicker* files, const std::string& home, const std::function<void()>& changed) {
    ComputerForm& form = sheet->form;
    Hosts& hosts = sheet->hosts();
    auto edit = [sheet, changed](std::function<void(AddComputerSheet&, const std::string&)> apply) {
        return [sheet, changed, apply](const std::string& text) {
            apply(*sheet, text);
            if (changed) changed();
        };
    };
    ui::Nodes rows{
        ui::field("add.name", "Name", form.name, edit([](AddComputerSheet& s, const std::string& t) { s.form.name = t; }))
            .placeholder("Optional, such as Build server")
            .help("What your phone calls it. Empty uses the computer's own name."),
        ui::field("add.host", "Host", form.address,
                  edit([](AddComputerSheet& s, const std::string& t) { s.setAddress(t); }))
            .placeholder("server.example.com or 192.168.1.20")
            .help("The computer's host name or IP address, or a Host from your ~/.ssh/config."),
    };
    if (!hosts.sshHosts.empty()) {
        std::vector<ui::Choice> entries;
        for (const auto& entry : hosts.sshHosts) entries.push_back({entry, entry});
        rows.push_back(ui::picker("Config", std::move(entries), form.address,
                                  edit([](AddComputerSheet& s, const std::string& t) { s.setAddress(t); }))
                           .pickerAs(ui::PickerStyle::Menu)
                           .help("Picks a Host from your ~/.ssh/config; ssh then reads its user, port and key from "
                                 "there.")
                           .key("add.config"));
    }
    rows.push_back(ui::field("add.port", "Port", form.port,
                             edit([](AddComputerSheet& s, const std::string& t) { s.setPort(t); }))
                       .help("The SSH server's port, 22 unless it was changed."));
    rows.push_back(ui::field("add.user", "User", form.user,
                             edit([](AddComputerSheet& s, const std::string& t) { s.form.user = t; }))
                       .help("The account to sign in as. The bridge runs as this user there."));
    std::vector<ui::Choice> kinds;
    for (auto kind : ComputerForm::signIns()) kinds.push_back({ComputerForm::label(kind), ComputerForm::id(kind)});
    rows.push_back(ui::picker("Sign in with", std::move(kinds), ComputerForm::id(form.signIn),
                              edit([](AddComputerSheet& s, const std::string& t) {
                                  for (auto kind : ComputerForm::signIns())
                                      if (ComputerForm::id(kind) == t) s.setSignIn(kind);
                              }))
                       .help("SSH agent or config uses the keys this Mac's ssh already uses. A key file or a password "
                             "is used once, to put this Mac's own key on the computer.")
                       .key("add.signIn"));
    auto secret = edit([](AddComputerSheet& s, const std::string& t) { s.form.secret = t; });
    if (form.signIn == ComputerForm::SignIn::key) {
        ui::Nodes keyRow{ui::field("add.key", "Key file", form.key,
                                   edit([](AddComputerSheet& s, const std::string& t) { s.form.key = t; }))};
        // Without a chooser the typed path is the way in.
        if (files && files->canChoose())
            keyRow.push_back(ui::button("Choose…", [sheet, files, home, changed] {
                                 spawn(chooseKey(sheet, files, home, changed));
                             }).key("add.choose"));
        rows.push_back(ui::hstack(std::move(keyRow)).key("add.keyRow"));
        rows.push_back(ui::secureField("add.passphrase", "Passphrase", form.secret, secret)
                           .placeholder("Only if the key has one")
                           .help(onceHelp));
    } else if (form.signIn == ComputerForm::SignIn::password) {
        rows.push_back(ui::secureField("add.password", "Password", form.secret, secret).help(onceHelp));
    }
    rows.push_back(ui::text(kindLine(form.signIn)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("add.kindLine"));
    rows.push_back(ui::toggle("Terminal only", form.terminalOnly,
                              [sheet, changed](bool on) {
                                  sheet->setTerminalOnly(on);
                                  if (changed) changed();
                              })
                       .help("Installs nothing there: your phone opens shells on it through this Mac, and runs no "
                             "agents on it. Any system with an SSH server will do, Windows too.")
                       .key("add.terminalOnly"));
    return ui::vstack(std::move(rows)).key("add.form");
}

ui::Node foundPanel(const Sheet& sheet, const std::function<void()>& changed) {
    Hosts& hosts = sheet->hosts();
    if (!hosts.found) return ui::nothing();
    const ComputerFound& found = *hosts.found;
    if (found.confirm.value_or(false)) {
        return ui::vstack({
            ui::text("This Mac hasn't seen this computer before. Check its host key:"),
            ui::text(found.fingerprint.empty() ? std::string("No key could be read.") : found.fingerprint)
                .style(ui::TextStyle::Monospaced)
                .selectable()
                .key("trust.fingerprint"),
            ui::text("On the computer, ssh-keygen -lf /etc/ssh/ssh_host_ed25519_key.pub shows its own. Trust it only if "
                     "they match.")
                .tone(ui::Tone::Dim),
            ui::button("Trust this key", [sheet] { spawn(sheet->trust()); })
                .enabled(!hosts.busy && !found.fingerprint.empty())
                .role(ui::Role::Primary)
                .key("trust"),
            ui::text("Nothing, not even a password, goes to the computer until you trust its key. Later connections "
                     "refuse any other key.")
                .tone(ui::Tone::Dim)
                .style(ui::TextStyle::Caption),
        }).key("trustPanel");
    }
    const std::string system = ComputerForm::systemName(found.os);
    ui::Nodes rows{ui::text(found.arch.empty() ? "Found " + system + "." : "Found " + system + " on " + found.arch + ".")
                       .key("found")};
    if (!found.fingerprint.empty())
        rows.push_back(ui::text("Host key " + found.fingerprint).style(ui::TextStyle::Caption).selectable().key("hostKey"));
    const bool terminal = sheet->form.terminalOnly;
    const HostAgentsThere there = AgentChoice::fromFound(found.os, found.agents, found.node);
    if (!terminal && !found.companion && AgentChoice::installs(found.os)) {
        auto tick = [sheet, changed](std::set<std::string> AddComputerSheet::*set) {
            return [sheet, changed, set](const std::string& name, bool on) {
                auto& chosen = (*sheet).*set;
                if (on) chosen.insert(name);
                else chosen.erase(name);
                if (changed) changed();
            };
        };
        rows.push_back(AgentPicker::build(there, sheet->agents, tick(&AddComputerSheet::agents)));
        rows.push_back(AccountPicker::build(sheet->accounts(), sheet->copying, sheet->computerName(),
                                            tick(&AddComputerSheet::copying)));
    } else {
        rows.push_back(ui::text(AgentChoice::line(there)).key("agents.line"));
    }
    if (found.docker && !found.docker->empty()) {
        std::string docker = HostDocker::line(found.docker, found.os);
        if (*found.docker == "missing" && found.os == "linux") docker += " You can install it once the computer is added.";
        rows.push_back(ui::text(docker).tone(ui::Tone::Dim).key("found.docker"));
    }
    if (found.companion && !terminal)
        rows.push_back(ui::text("This Mac already runs Orvan Companion. Pair your phone with it directly instead of "
                                "adding it here.")
                           .tone(ui::Tone::Warning));
    if (terminal)
        rows.push_back(ui::text("Add puts nothing there. Your phone opens shells on it through this Mac.").tone(ui::Tone::Dim));
    return ui::vstack(std::move(rows)).key("foundPanel");
}

ui::Node questions(const Sheet& sheet, const std::function<void()>& changed) {
    ui::Nodes out;
    if (sheet->sudo) {
        auto done = [sheet, changed](std::optional<std::string> password) {
            spawn(sheet->sudoDone(std::move(password)));
            if (changed) changed();
        };
        out.push_back(SudoSheet::view(sheet->sudo->host, sheet->sudo->purpose, sheet->sudoPassword, done, changed)
                          .key(sheet->sudo->id));
    }
    if (sheet->replacing) {
        out.push_back(ui::confirmation(sheet->replacing->question, ReplaceAsk::message,
                                       {ui::button(AccountCopy::replace, [sheet] { spawn(sheet->replace()); })
                                            .role(ui::Role::Destructive),
                                        ui::button("Cancel",
                                                   [sheet, changed] {
                                                       sheet->dismissReplace();
                                                       if (changed) changed();
                                                   })
                                            .role(ui::Role::Cancel)})
                          .key(sheet->replacing->id()));
    }
    return ui::vstack(std::move(out)).key("questions");
}

} // namespace

ui::Node build(const std::shared_ptr<AddComputerSheet>& sheet, FilePicker* files, const std::string& home,
               std::function<void()> changed) {
    if (!sheet || sheet->isClosed()) return ui::nothing();
    Hosts& hosts = sheet->hosts();
    Sheet s = sheet;
    auto close = [s] { s->close(); };
    ui::Nodes rows{formFields(sheet, files, home, changed)};
    ui::Nodes testRow{ui::button("Test", [s] { spawn(s->test()); })
                          .enabled(sheet->canTest())
                          .help("Signs in and says what the computer is, without installing anything.")
                          .key("add.test")};
    if (hosts.busy) testRow.push_back(ui::spinner());
    rows.push_back(ui::hstack(std::move(testRow)).key("add.testRow"));
    rows.push_back(foundPanel(sheet, changed));
    for (std::size_t i = 0; i < hosts.steps.size(); ++i)
        rows.push_back(ui::text(hosts.steps[i]).key("step:" + std::to_string(i)));
    if (!hosts.note.empty()) rows.push_back(ui::text(hosts.note).tone(ui::Tone::Danger).key("add.note"));
    ui::Nodes buttons{ui::button("Close", close).role(ui::Role::Cancel).key("add.close")};
    if (!sheet->added)
        buttons.push_back(ui::button("Add", [s] { spawn(s->add()); })
                              .enabled(sheet->canAdd())
                              .role(ui::Role::Primary)
                              .help(sheet->addHelp())
                              .key("add.add"));
    else
        buttons.push_back(ui::button("Done", close).enabled(!hosts.busy).role(ui::Role::Primary).key("add.done"));
    rows.push_back(ui::hstack(std::move(buttons)).key("add.buttons"));
    rows.push_back(questions(sheet, changed));
    return ui::sheet("Add a computer", std::move(rows), close).key("addComputer");
}

} // namespace orvan::AddComputerSheetView
