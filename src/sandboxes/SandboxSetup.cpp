#include "sandboxes/SandboxSetup.h"

#include <algorithm>

namespace orvan::SandboxSetup {

std::optional<RuntimeChoice> stopped(const std::string& runtime, const std::vector<RuntimeChoice>& choices) {
    auto in = runtime.empty()
                  ? std::find_if(choices.begin(), choices.end(), [](const auto& c) { return c.chosen; })
                  : std::find_if(choices.begin(), choices.end(), [&](const auto& c) { return c.id == runtime; });
    if (in == choices.end()) return std::nullopt;
    if (in->supported && in->installed && !in->running) return *in;
    return std::nullopt;
}

std::optional<std::string> line(const std::string& runtime, const std::string& service, const std::string& docker,
                                bool installing, const std::vector<RuntimeChoice>& choices) {
    if (service == "starting")
        return "Setting up Apple's container tool… The first time, it fetches the small Linux kernel sandboxes run on.";
    if (docker == "starting")
        return "Starting Docker Desktop… Accept its agreement if it asks; sandboxes start once its engine runs.";
    if (auto halted = stopped(runtime, choices)) {
        if (halted->id == "docker")
            return "Docker Desktop is installed, but isn't running. Sandboxes need its engine: open it, and accept its "
                   "agreement if it asks.";
        return "Apple's container tool is installed, but its service isn't running. Reopening Orvan Companion starts it.";
    }
    if (!runtime.empty()) return std::nullopt;
    if (installing) return "Setting up…";
    return "Sandboxes need Apple's container tool or Docker Desktop on this Mac. Set up installs the one you pick.";
}

bool offersOpen(const std::string& runtime, const std::string& docker, const std::vector<RuntimeChoice>& choices) {
    if (docker == "starting") return false;
    auto halted = stopped(runtime, choices);
    return halted && halted->id == "docker";
}

std::optional<std::string> cardLine(const RuntimeChoice& choice, const std::string& docker) {
    if (!choice.supported || !choice.installed || choice.running) return std::nullopt;
    if (choice.id != "docker") return "Installed, but its service isn't running.";
    if (docker == "starting") return "Starting Docker Desktop…";
    return "Installed, but not running. Sandboxes need its engine running.";
}

} // namespace orvan::SandboxSetup
