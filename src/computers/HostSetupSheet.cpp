#include "computers/HostSetupSheet.h"

#include "computers/AccountCopy.h"
#include "computers/AccountPicker.h"
#include "computers/AgentChoice.h"
#include "computers/AgentPicker.h"

#include <algorithm>

namespace orvan {

HostSetupSheet::HostSetupSheet(Hosts& hosts, Accounts& accounts, HostSetup s, std::function<void()> closed)
    : setup(std::move(s)), hosts_(hosts), accounts_(accounts), closed_(std::move(closed)) {}

HostSetupSheet::~HostSetupSheet() {
    alive_.cancel();
    std::fill(sudoPassword.begin(), sudoPassword.end(), '\0');
}

void HostSetupSheet::tell() {
    if (changed) changed();
}

std::vector<std::string> HostSetupSheet::toInstall() const {
    return AgentChoice::request(agents, there.value_or(HostAgentsThere{}));
}

std::vector<std::string> HostSetupSheet::toCopy() const { return AccountCopy::request(copying, accounts_.list); }

Task<void> HostSetupSheet::open() {
    Cancel alive = alive_;
    hosts_.clearWork();
    if (setup.part != HostSetup::Part::agents) co_return;
    auto read = co_await hosts_.lookAgents(setup.host);
    if (alive.cancelled()) co_return;
    there = read;
    tell();
}

Task<void> HostSetupSheet::install(std::string password) {
    Cancel alive = alive_;
    const auto names = toInstall();
    if (names.empty() || hosts_.busy) co_return;
    AgentInstall installed = co_await hosts_.installAgents(setup.host, names, std::move(password));
    if (alive.cancelled()) co_return;
    if (installed.kind == AgentInstall::Kind::needsSudo) {
        sudo = SudoAsk::make(setup.host, SudoPurpose::agents(installed.packages), names, {});
        tell();
        co_return;
    }
    // Done or not, what is there now is the truth; a failed read keeps the last one.
    auto read = co_await hosts_.lookAgents(setup.host);
    if (alive.cancelled()) co_return;
    if (read) there = read;
    tell();
}

Task<void> HostSetupSheet::sudoDone(std::optional<std::string> password) {
    sudo.reset();
    if (password) co_await install(std::move(*password));
}

Task<void> HostSetupSheet::copy(bool replace) {
    Cancel alive = alive_;
    const auto ids = toCopy();
    if (ids.empty() || hosts_.busy) co_return;
    replacing.reset();
    auto copied = co_await hosts_.copyAccounts(setup.host, ids, accounts_.list, replace);
    if (alive.cancelled()) co_return;
    // What went is no longer chosen, so "Replace" sends only what remains.
    for (const auto& row : copied.results)
        if (row.copied) copying.erase(row.id);
    replacing = copied.replacing;
    tell();
}

void HostSetupSheet::close() {
    alive_.cancel();
    std::fill(sudoPassword.begin(), sudoPassword.end(), '\0');
    sudoPassword.clear();
    auto closed = std::move(closed_);
    closed_ = nullptr;
    if (closed) closed();
}

namespace HostSetupSheetView {

ui::Node build(const std::shared_ptr<HostSetupSheet>& sheet, std::function<void()> changed) {
    if (!sheet || sheet->isClosed()) return ui::nothing();
    auto s = sheet;
    Hosts& hosts = sheet->hosts();
    const CompanionHost& host = sheet->setup.host;
    const bool forAgents = sheet->setup.part == HostSetup::Part::agents;
    auto tick = [s, changed, forAgents](const std::string& name, bool on) {
        auto& chosen = forAgents ? s->agents : s->copying;
        if (on) chosen.insert(name);
        else chosen.erase(name);
        if (changed) changed();
    };
    ui::Nodes rows;
    ui::Node action;
    if (forAgents) {
        if (sheet->there) rows.push_back(AgentPicker::build(*sheet->there, sheet->agents, tick));
        else rows.push_back(ui::text("Reading what is there…").tone(ui::Tone::Dim).key("reading"));
        const std::string user = host.user && !host.user->empty() ? *host.user : std::string("its user");
        action = ui::button("Install", [s] { spawn(s->install("")); })
                     .enabled(!hosts.busy && !sheet->toInstall().empty())
                     .role(ui::Role::Primary)
                     .help("Installs the agents you chose there, as " + user + ". The bridge there finds them at once.")
                     .key("setup.install");
    } else {
        rows.push_back(AccountPicker::build(sheet->accounts(), sheet->copying, host.name, tick));
        action = ui::button("Copy", [s] { spawn(s->copy(false)); })
                     .enabled(!hosts.busy && !sheet->toCopy().empty())
                     .role(ui::Role::Primary)
                     .help("Copies the accounts you chose to " + host.name +
                           " over this Mac's SSH connection to it. Threads there can then run on them.")
                     .key("setup.copy");
    }
    for (std::size_t i = 0; i < hosts.steps.size(); ++i)
        rows.push_back(ui::text(hosts.steps[i]).key("step:" + std::to_string(i)));
    if (!hosts.note.empty()) rows.push_back(ui::text(hosts.note).tone(ui::Tone::Danger).key("setup.note"));
    ui::Nodes buttons{ui::button("Close", [s] { s->close(); }).role(ui::Role::Cancel).key("setup.close"), std::move(action)};
    if (hosts.busy) buttons.push_back(ui::spinner());
    rows.push_back(ui::hstack(std::move(buttons)).key("setup.buttons"));
    if (sheet->sudo) {
        auto done = [s, changed](std::optional<std::string> password) {
            spawn(s->sudoDone(std::move(password)));
            if (changed) changed();
        };
        rows.push_back(SudoSheet::view(sheet->sudo->host, sheet->sudo->purpose, sheet->sudoPassword, done, changed)
                           .key(sheet->sudo->id));
    }
    if (sheet->replacing) {
        rows.push_back(ui::confirmation(sheet->replacing->question, ReplaceAsk::message,
                                        {ui::button(AccountCopy::replace, [s] { spawn(s->copy(true)); })
                                             .role(ui::Role::Destructive),
                                         ui::button("Cancel",
                                                    [s, changed] {
                                                        s->dismissReplace();
                                                        if (changed) changed();
                                                    })
                                             .role(ui::Role::Cancel)})
                           .key(sheet->replacing->id()));
    }
    const std::string title = forAgents ? "Install agents on " + host.name : "Copy accounts to " + host.name;
    return ui::sheet(title, std::move(rows), [s] { s->close(); }).key(sheet->setup.id());
}

} // namespace HostSetupSheetView

} // namespace orvan
