#include "accounts/LoginCommand.h"

namespace orvan {

bool LoginCommand::fits(const CompanionAccount& account) const {
    return account.isDefault || account.home.empty() || !env.empty();
}

std::optional<LoginCommand> LoginCommand::decode(const Json& j) {
    if (!j.is_object() || !j.contains("argv") || !j["argv"].is_array()) return std::nullopt;
    LoginCommand out;
    for (const auto& arg : j["argv"]) {
        if (!arg.is_string()) return std::nullopt;
        out.argv.push_back(arg.get<std::string>());
    }
    if (j.contains("env") && !j["env"].is_null()) {
        if (!j["env"].is_object()) return std::nullopt;
        for (const auto& [name, value] : j["env"].items()) {
            if (!value.is_string()) return std::nullopt;
            out.env[name] = value.get<std::string>();
        }
    }
    return out;
}

namespace TerminalWindow {
std::optional<std::string> sentence(const TerminalRun& run) {
    switch (run.outcome) {
    case TerminalRun::Outcome::opened: return std::nullopt;
    case TerminalRun::Outcome::notLaunched:
    case TerminalRun::Outcome::noDisplay: return notOpened;
    case TerminalRun::Outcome::failed:
        if (run.errors.find("-1743") != std::string::npos) return notAllowed;
        return failed;
    }
    return failed;
}
} // namespace TerminalWindow

} // namespace orvan
