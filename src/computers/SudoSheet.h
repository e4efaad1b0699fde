#pragma once
// The question for sudo's password, when the agents' installers or a Docker install there need
// one. The password is kept only while the sheet stands, goes into one request, and is wiped from
// the sheet as it goes.

#include "computers/CompanionHost.h"
#include "computers/ComputersViewState.h"
#include "computers/Hosts.h"
#include "ui/Node.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

struct SudoPurpose {
    enum class Kind { agents, docker };
    Kind kind = Kind::docker;
    // With `agents`: what the package manager would add.
    std::vector<std::string> packages;

    static SudoPurpose agents(std::vector<std::string> packages) { return {Kind::agents, std::move(packages)}; }
    static SudoPurpose docker() { return {Kind::docker, {}}; }
    bool operator==(const SudoPurpose&) const = default;

    std::string why(const std::string& user) const;
    std::string button() const;
};

// Sudo asked for, and what goes on once it is answered.
struct SudoAsk {
    std::string id;
    CompanionHost host;
    SudoPurpose purpose;
    std::vector<std::string> agents;
    std::vector<std::string> accounts;

    // A fresh id each time, so a question asked again is a new sheet.
    static SudoAsk make(CompanionHost host, SudoPurpose purpose, std::vector<std::string> agents,
                        std::vector<std::string> accounts);
};

namespace SudoSheet {

// Why Docker needs the password, for `user` (the host's user, or "this user").
std::string dockerWhy(const std::string& user);

// The sheet over `host`: `password` is what is typed; `done` takes the password, or none on Cancel.
// An empty field sends nothing and the sheet stays.
ui::Node view(const CompanionHost& host, const SudoPurpose& purpose, std::string& password,
              std::function<void(std::optional<std::string>)> done, std::function<void()> changed);

// The Docker install's question on the section.
ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed);

} // namespace SudoSheet

} // namespace orvan
