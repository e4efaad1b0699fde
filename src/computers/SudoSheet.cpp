#include "computers/SudoSheet.h"

#include <algorithm>
#include <atomic>

namespace orvan {

namespace {

void wipe(std::string& secret) {
    std::fill(secret.begin(), secret.end(), '\0');
    secret.clear();
}

std::string userOf(const CompanionHost& host) {
    return host.user && !host.user->empty() ? *host.user : std::string("this user");
}

} // namespace

std::string SudoPurpose::why(const std::string& user) const {
    if (kind == Kind::docker) return SudoSheet::dockerWhy(user);
    std::string list;
    for (const auto& p : packages) list += (list.empty() ? "" : ", ") + p;
    if (list.empty()) list = "a few tools";
    return "The agents' installers need " + list + ", which the computer's package manager installs as root. Type " +
           user + "'s password for sudo. It is used once for that and is not saved. The agents themselves install as " +
           user + ", without sudo.";
}

std::string SudoPurpose::button() const { return kind == Kind::agents ? "Install" : "Install Docker"; }

SudoAsk SudoAsk::make(CompanionHost host, SudoPurpose purpose, std::vector<std::string> agents,
                      std::vector<std::string> accounts) {
    static std::atomic<unsigned long> next{0};
    return SudoAsk{"sudo-" + std::to_string(++next), std::move(host), std::move(purpose), std::move(agents),
                   std::move(accounts)};
}

namespace SudoSheet {

std::string dockerWhy(const std::string& user) {
    return "Installing Docker needs administrator rights there. Type " + user +
           "'s password for sudo. It is used once to install Docker and is not saved. That user joins the docker "
           "group, which lets its programs, agents among them, act as root there without a password.";
}

ui::Node view(const CompanionHost& host, const SudoPurpose& purpose, std::string& password,
              std::function<void(std::optional<std::string>)> done, std::function<void()> changed) {
    std::string* typed = &password;
    auto send = [typed, done] {
        if (typed->empty()) return;
        std::string given = *typed;
        wipe(*typed);
        done(std::move(given));
    };
    auto cancel = [typed, done] {
        wipe(*typed);
        done(std::nullopt);
    };
    ui::Nodes body{
        ui::text(purpose.why(userOf(host))),
        ui::secureField("sudo.password", "Password", password,
                        [typed, changed](const std::string& text) {
                            *typed = text;
                            if (changed) changed();
                        })
            .submit(send),
        ui::hstack({ui::button("Cancel", cancel).role(ui::Role::Cancel).key("cancel"),
                    ui::button(purpose.button(), send).role(ui::Role::Primary).key("install")}),
    };
    return ui::sheet("sudo on " + host.name, std::move(body), cancel).key("sudo");
}

ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed) {
    if (!hosts.sudoFor) {
        // A question put away some other way leaves nothing typed behind.
        if (!state.sudoPassword.empty()) wipe(state.sudoPassword);
        return ui::nothing();
    }
    Hosts* model = &hosts;
    // With a password the install goes on; without, the question closes and nothing more happens.
    auto done = [model, changed](std::optional<std::string> password) {
        std::optional<CompanionHost> host = model->sudoFor;
        model->clearSudo();
        if (changed) changed();
        if (host && password && !password->empty()) spawn(model->installDocker(*host, *password));
        if (password) wipe(*password);
    };
    return view(*hosts.sudoFor, SudoPurpose::docker(), state.sudoPassword, done, changed);
}

} // namespace SudoSheet

} // namespace orvan
