#include "computers/AddComputerSheet.h"

#include "computers/AccountCopy.h"
#include "computers/AgentChoice.h"
#include "foundation/Text.h"

#include <algorithm>

namespace orvan {

namespace {
void wipeText(std::string& secret) {
    std::fill(secret.begin(), secret.end(), '\0');
    secret.clear();
}
} // namespace

AddComputerSheet::AddComputerSheet(Hosts& hosts, Accounts& accounts, ComputerForm start, std::function<void()> closed)
    : form(std::move(start)), hosts_(hosts), accounts_(accounts), closed_(std::move(closed)) {}

AddComputerSheet::~AddComputerSheet() {
    alive_.cancel();
    wipe();
}

void AddComputerSheet::wipe() {
    wipeText(form.secret);
    wipeText(sudoPassword);
}

std::string AddComputerSheet::computerName() const {
    std::string name = Text::trimmed(form.name);
    return name.empty() ? Text::trimmed(form.address) : name;
}

void AddComputerSheet::setSignIn(ComputerForm::SignIn signIn) {
    if (signIn == form.signIn) return;
    form.signIn = signIn;
    wipeText(form.secret);
}

void AddComputerSheet::setAddress(std::string address) {
    if (address == form.address) return;
    form.address = std::move(address);
    // A trusted key is trusted for one computer only.
    form.fingerprint.clear();
    hosts_.clearFound();
}

void AddComputerSheet::setPort(std::string port) {
    if (port == form.port) return;
    form.port = std::move(port);
    form.fingerprint.clear();
    hosts_.clearFound();
}

void AddComputerSheet::setTerminalOnly(bool on) {
    if (on == form.terminalOnly) return;
    form.terminalOnly = on;
    // What a test says depends on it.
    hosts_.clearFound();
}

bool AddComputerSheet::canTest() const { return !hosts_.busy && !Text::trimmed(form.address).empty(); }

bool AddComputerSheet::canAdd() const {
    return !hosts_.busy && hosts_.found && !hosts_.found->confirm.value_or(false);
}

std::string AddComputerSheet::addHelp() const {
    if (!hosts_.found || hosts_.found->confirm.value_or(false))
        return "Test the computer first, and trust its host key if this Mac hasn't seen it.";
    if (form.terminalOnly) return "Adds the computer for your phone's terminal, installing nothing there.";
    return "Copies the bridge there, starts it as a service, and adds the computer to your phone; then installs the "
           "agents and copies the accounts you chose.";
}

Task<void> AddComputerSheet::test() {
    if (!canTest()) co_return;
    co_await hosts_.test(form);
}

Task<void> AddComputerSheet::trust() {
    if (hosts_.busy || !hosts_.found || hosts_.found->fingerprint.empty()) co_return;
    form.fingerprint = hosts_.found->fingerprint;
    co_await hosts_.test(form);
}

Task<void> AddComputerSheet::add() {
    if (!canAdd()) co_return;
    Cancel alive = alive_;
    auto result = co_await hosts_.add(form);
    if (alive.cancelled()) co_return;
    added = result;
    tell();
    // The form stays as it is for another try; the note says why.
    if (!added) co_return;
    const auto& found = hosts_.found;
    std::vector<std::string> names;
    if (found) names = AgentChoice::request(agents, AgentChoice::fromFound(found->os, found->agents, found->node));
    std::vector<std::string> ids = AccountCopy::request(copying, accounts_.list);
    if (form.terminalOnly || (names.empty() && ids.empty())) {
        // Long enough to read what the bridge did.
        if (!co_await hosts_.clock().sleep(readingPause, alive) || alive.cancelled()) co_return;
        close();
        co_return;
    }
    if (!names.empty()) {
        AgentInstall installed = co_await hosts_.installAgents(*added, names, "");
        if (alive.cancelled()) co_return;
        if (installed.kind == AgentInstall::Kind::needsSudo) {
            sudo = SudoAsk::make(*added, SudoPurpose::agents(installed.packages), names, ids);
            tell();
            co_return;
        }
    }
    if (!ids.empty()) co_await copyChosen(ids);
}

Task<void> AddComputerSheet::copyChosen(std::vector<std::string> ids) {
    if (!added) co_return;
    Cancel alive = alive_;
    auto copied = co_await hosts_.copyAccounts(*added, std::move(ids), accounts_.list, false);
    if (alive.cancelled()) co_return;
    replacing = copied.replacing;
    tell();
}

Task<void> AddComputerSheet::sudoDone(std::optional<std::string> password) {
    Cancel alive = alive_;
    std::optional<SudoAsk> ask = std::move(sudo);
    sudo.reset();
    if (!ask) co_return;
    if (!password) {
        hosts_.addStep("Did not install the agents: sudo's password was not given");
    } else if (!ask->agents.empty()) {
        AgentInstall installed = co_await hosts_.installAgents(ask->host, ask->agents, *password);
        wipeText(*password);
        if (alive.cancelled()) co_return;
        if (installed.kind == AgentInstall::Kind::needsSudo) {
            // A wrong password comes back as the same question.
            sudo = SudoAsk::make(ask->host, SudoPurpose::agents(installed.packages), ask->agents, ask->accounts);
            tell();
            co_return;
        }
    }
    if (!ask->accounts.empty()) co_await copyChosen(ask->accounts);
}

Task<void> AddComputerSheet::replace() {
    std::optional<ReplaceAsk> ask = std::move(replacing);
    replacing.reset();
    if (!ask || !added) co_return;
    // The answer's own question, if any, goes no further: the owner already said yes once.
    co_await hosts_.copyAccounts(*added, ask->ids, accounts_.list, true);
}

void AddComputerSheet::close() {
    alive_.cancel();
    wipe();
    auto closed = std::move(closed_);
    closed_ = nullptr;
    if (closed) closed();
}

} // namespace orvan
