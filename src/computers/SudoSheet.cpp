#include "computers/SudoSheet.h"

#include <algorithm>

namespace orvan::SudoSheet {

namespace {

void wipe(std::string& secret) {
    std::fill(secret.begin(), secret.end(), '\0');
    secret.clear();
}

// With a password the install goes on; without, the question closes and nothing more happens.
void finish(Hosts& hosts, ComputersViewState& state, bool withPassword, const std::function<void()>& changed) {
    if (withPassword && state.sudoPassword.empty()) return;
    std::optional<CompanionHost> host = hosts.sudoFor;
    std::string password = withPassword ? state.sudoPassword : std::string();
    wipe(state.sudoPassword);
    hosts.clearSudo();
    if (changed) changed();
    if (host && !password.empty()) spawn(hosts.installDocker(*host, password));
    wipe(password);
}

} // namespace

std::string dockerWhy(const std::string& user) {
    return "Installing Docker needs administrator rights there. Type " + user +
           "'s password for sudo. It is used once to install Docker and is not saved. That user joins the docker "
           "group, which lets its programs, agents among them, act as root there without a password.";
}

ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed) {
    if (!hosts.sudoFor) {
        // A question put away some other way leaves nothing typed behind.
        if (!state.sudoPassword.empty()) wipe(state.sudoPassword);
        return ui::nothing();
    }
    const CompanionHost& host = *hosts.sudoFor;
    Hosts* model = &hosts;
    ComputersViewState* s = &state;
    auto install = [model, s, changed] { finish(*model, *s, true, changed); };
    auto cancel = [model, s, changed] { finish(*model, *s, false, changed); };
    const std::string user = host.user && !host.user->empty() ? *host.user : std::string("this user");
    ui::Nodes body{
        ui::text(dockerWhy(user)),
        ui::secureField("sudo.password", "Password", state.sudoPassword,
                        [s, changed](const std::string& text) {
                            s->sudoPassword = text;
                            if (changed) changed();
                        })
            .submit(install),
        ui::hstack({ui::button("Cancel", cancel).role(ui::Role::Cancel).key("cancel"),
                    ui::button("Install Docker", install).role(ui::Role::Primary).key("install")}),
    };
    return ui::sheet("sudo on " + host.name, std::move(body), cancel).key("sudo");
}

} // namespace orvan::SudoSheet
