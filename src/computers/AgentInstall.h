#pragma once
// How an install of agents on a computer ended. Sudo's question is no failure: the installers
// need packages that only root may add, and the owner is asked for the password.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct AgentInstall {
    enum class Kind { needsSudo, done, failed };
    Kind kind = Kind::failed;
    // With `needsSudo`: what the package manager would add.
    std::vector<std::string> packages;

    static AgentInstall needsSudo(std::vector<std::string> packages) { return {Kind::needsSudo, std::move(packages)}; }
    static AgentInstall done() { return {Kind::done, {}}; }
    static AgentInstall failed() { return {Kind::failed, {}}; }
    bool operator==(const AgentInstall&) const = default;

    // The bridge's answer to an install.
    struct Answer {
        std::optional<std::vector<std::string>> steps;
        std::optional<std::string> message;
        std::optional<std::vector<std::string>> packages;
        static std::optional<Answer> decode(const Json& j);
    };
};

} // namespace orvan
