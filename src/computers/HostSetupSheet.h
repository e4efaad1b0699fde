#pragma once
// Agents or accounts onto a computer that is already added, from its card: what is there, what to
// install or copy, and the questions for sudo's password and for replacing a sign-in there.

#include "accounts/Accounts.h"
#include "computers/HostAgentsThere.h"
#include "computers/HostSetup.h"
#include "computers/Hosts.h"
#include "computers/ReplaceAsk.h"
#include "computers/SudoSheet.h"
#include "ui/Node.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace orvan {

class HostSetupSheet {
public:
    HostSetupSheet(Hosts& hosts, Accounts& accounts, HostSetup setup, std::function<void()> closed);
    ~HostSetupSheet();
    HostSetupSheet(const HostSetupSheet&) = delete;
    HostSetupSheet& operator=(const HostSetupSheet&) = delete;

    const HostSetup setup;
    std::optional<HostAgentsThere> there;
    std::set<std::string> agents;
    std::set<std::string> copying;
    std::optional<SudoAsk> sudo;
    std::optional<ReplaceAsk> replacing;
    std::string sudoPassword;
    // Told when the sheet's own fields change after a wait, so its window draws again.
    std::function<void()> changed;

    // Empties the words of earlier work and, for agents, reads what is there.
    Task<void> open();
    Task<void> install(std::string password);
    Task<void> sudoDone(std::optional<std::string> password);
    Task<void> copy(bool replace);
    void dismissReplace() { replacing.reset(); }

    std::vector<std::string> toInstall() const;
    std::vector<std::string> toCopy() const;

    void close();
    bool isClosed() const { return closed_ == nullptr; }
    Hosts& hosts() { return hosts_; }
    Accounts& accounts() { return accounts_; }

private:
    void tell();

    Hosts& hosts_;
    Accounts& accounts_;
    std::function<void()> closed_;
    Cancel alive_;
};

namespace HostSetupSheetView {
ui::Node build(const std::shared_ptr<HostSetupSheet>& sheet, std::function<void()> changed);
} // namespace HostSetupSheetView

} // namespace orvan
