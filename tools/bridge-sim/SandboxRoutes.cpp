#include "SandboxRoutes.h"

#include "Routes.h"
#include "SandboxState.h"

#include <cstdlib>
#include <string_view>

namespace orvan::sim::SandboxRoutes {

using nlohmann::json;

namespace {

constexpr const char* base = "/companion/sandbox";

// One process serves one bridge and the server's lock guards every call, so, like the accounts,
// the sandboxes live here rather than in the shared state that other families reset.
SandboxState& state() {
    // ORVAN_SIM_SANDBOX=bare starts on a computer with nothing set up, to walk through an install.
    static SandboxState kept = [] {
        const char* seed = std::getenv("ORVAN_SIM_SANDBOX");
        return SandboxState::seeded(seed && std::string_view(seed) == "bare");
    }();
    return kept;
}

} // namespace

bool owns(const std::string& path) { return path == base || path.rfind(std::string(base) + "/", 0) == 0; }

Reply answer(Sim&, const std::string& method, const std::string& target, const std::string& body, TimePoint now) {
    SandboxState& s = state();
    const std::string path = target.substr(0, target.find('?'));
    const bool counted = target.find("uncounted=1", path.size()) == std::string::npos;
    const bool read = method == "GET" || method == "HEAD";
    if (path == base) {
        if (!read) return Reply::message(405, method + " is not how " + path + " is used.");
        return Reply::json(200, s.read(now, counted));
    }
    const std::string verb = path.substr(std::string(base).size() + 1);
    if (verb != "stop" && verb != "image" && verb != "runtime" && verb != "agents")
        return Reply::message(404, "Nothing is served at " + path + ".");
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    if (verb == "stop") return s.stop(*parsed, now);
    if (verb == "image") return s.changeImage(*parsed, now);
    if (verb == "runtime") return s.runtimeAction(*parsed, now);
    return s.setAgents(*parsed);
}

} // namespace orvan::sim::SandboxRoutes
