#include "foundation/Carryover.h"

#include <cstring>

extern char** environ;

namespace orvan::Carryover {

Environment processEnvironment() {
    Environment out;
    for (char** e = environ; e && *e; ++e) {
        const char* eq = std::strchr(*e, '=');
        if (!eq) continue;
        out.emplace(std::string(*e, static_cast<size_t>(eq - *e)), std::string(eq + 1));
    }
    return out;
}

const std::map<std::string, std::string>& oldVariables() {
    static const std::map<std::string, std::string> names{
        {"ORVAN_DIR", "TULM_MOBILE_DIR"},
        {"ORVAN_COMPANION_BIN", "TULM_COMPANION_BIN"},
    };
    return names;
}

std::optional<std::string> env(const std::string& name, const Environment& environment) {
    if (auto it = environment.find(name); it != environment.end() && !it->second.empty()) return it->second;
    auto old = oldVariables().find(name);
    if (old == oldVariables().end()) return std::nullopt;
    if (auto it = environment.find(old->second); it != environment.end() && !it->second.empty()) return it->second;
    return std::nullopt;
}

std::optional<std::string> env(const std::string& name) { return env(name, processEnvironment()); }

} // namespace orvan::Carryover
