#pragma once
// The computers added over SSH: the list, testing and adding one, removing one, what each has of
// Docker and of the sandbox desktop, and the running word of each long operation on it. The
// bridge answers the long calls only when the work over there is done; only the image build is
// followed by polling.

#include "accounts/CompanionAccount.h"
#include "computers/AccountCopy.h"
#include "computers/AgentInstall.h"
#include "computers/CompanionHost.h"
#include "computers/ComputerForm.h"
#include "computers/ComputerFound.h"
#include "computers/HostAgentsThere.h"
#include "computers/HostSandbox.h"
#include "computers/ReplaceAsk.h"
#include "computers/HostSignInTool.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "platform/LocalApi.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

class Hosts final : public Observable {
public:
    Hosts(LocalApi& api, Clock& clock, Environment environment);
    ~Hosts() override;

    // Published fields, in their declared order.
    std::vector<CompanionHost> hosts;
    // Host entries of the user's SSH configuration that aren't added yet.
    std::vector<std::string> sshHosts;
    // Running words of test, add, install and copy, in order.
    std::vector<std::string> steps;
    // A failure that isn't tied to one computer.
    std::string note;
    bool busy = false;
    std::optional<ComputerFound> found;
    // This Mac's bridge version.
    std::string bridge;
    // By target: the last reading, the sentence on its card, and whether a long operation runs there.
    std::map<std::string, HostSandbox> sandbox;
    std::map<std::string, std::string> hostNote;
    std::set<std::string> working;
    // A computer whose Docker install waits for sudo's password.
    std::optional<CompanionHost> sudoFor;

    Task<void> refresh();
    Task<void> test(ComputerForm form);
    Task<std::optional<CompanionHost>> add(ComputerForm form);
    // Reports nothing: a computer that could not be removed simply stays in the list that follows.
    Task<void> remove(CompanionHost host);
    Task<void> check(CompanionHost host);
    // The first try goes without a password; a 401 asks for sudo's through `sudoFor`.
    Task<void> installDocker(CompanionHost host, std::string password);
    Task<std::optional<HostSandbox>> sandboxAction(CompanionHost host, std::string action);
    // Starts the build, then reads its state every 1.5 s until it settles, 800 reads at most.
    Task<void> buildImage(CompanionHost host);
    Task<void> addTools(CompanionHost host);
    Task<void> updateBridge(CompanionHost host);

    // What the section reads when it appears: the list, then, one after the other, each computer
    // whose Docker or bridge is worth reading again.
    Task<void> open();
    static bool checkedOnOpen(const CompanionHost& host);

    // Agents and accounts onto a computer. A 401 to an install asks for sudo's password; a 409 to a
    // copy asks before a sign-in there is replaced. Neither is a failure.
    Task<std::optional<HostAgentsThere>> lookAgents(CompanionHost host);
    Task<AgentInstall> installAgents(CompanionHost host, std::vector<std::string> names, std::string password);
    struct Copied {
        std::vector<AccountCopy::Result> results;
        std::optional<ReplaceAsk> replacing;
    };
    Task<Copied> copyAccounts(CompanionHost host, std::vector<std::string> ids, std::vector<CompanionAccount> accounts,
                              bool replace);
    // Words added to the running steps by a sheet, as the model's own would be.
    void addStep(std::string line);
    Clock& clock() { return clock_; }

    // A sheet opened afresh: the words of earlier work go.
    void clearWork() {
        assign(steps, std::vector<std::string>{});
        assign(note, std::string());
    }
    // A change in the add sheet's form made the last test's findings wrong.
    void clearFound() { assign(found, std::nullopt); }

    // The sudo question was answered or put away.
    void clearSudo() { assign(sudoFor, std::nullopt); }

    static constexpr int buildPolls = 800;

    // What can sign in on a computer and what runs there; absent with `note` set when it did not say.
    Task<std::optional<HostSignInTools>> signInTools(CompanionHost host);
    // One call of a running sign-in (start, read, send a code, cancel): its state, or the sentence
    // that says why there is none. Touches no field, so a cancel may outlive the sheet that sent it.
    Task<std::variant<HostSignInState, std::string>> signInCall(std::string path, std::string target, std::string tool,
                                                               std::optional<std::string> code, Duration timeout);
    // A sheet opens on a clean slate.
    void clearNote() { assign(note, std::string()); }

private:
    Task<HttpAnswer> send(std::string path, std::optional<Json> body, Duration timeout);
    void setHostNote(const std::string& target, std::string text);
    void setWorking(const std::string& target, bool on);

    LocalApi& api_;
    Clock& clock_;
    Environment environment_;
    Cancel alive_;
};

} // namespace orvan
