#include "HostRoutes.h"

#include "AccountsRoutes.h"
#include "HostState.h"
#include "Routes.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace orvan::sim::HostRoutes {

namespace {

constexpr const char* base = "/companion/hosts";

// Kept here like the sandboxes, so that a reseed of the shared state leaves the computers alone.
// ORVAN_SIM_HOSTS=badrow starts with a list the companion must refuse.
HostState& state() {
    static HostState kept = [] {
        const char* options = std::getenv("ORVAN_SIM_HOSTS");
        return HostState::seeded(options ? options : "");
    }();
    return kept;
}

} // namespace

const SimHost* added(const std::string& target) {
    for (const auto& host : state().hosts)
        if (host.target == target) return &host;
    return nullptr;
}

bool owns(const std::string& path) { return path == base || path.rfind(std::string(base) + "/", 0) == 0; }

Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now) {
    HostState& s = state();
    if (path == base) {
        if (method != "GET" && method != "HEAD") return Reply::message(405, method + " is not how " + path + " is used.");
        return Reply::json(200, s.list(now));
    }
    const std::string verb = path.substr(std::string(base).size() + 1);
    static const char* const verbs[] = {"test",   "add",    "remove", "check",       "docker",
                                        "sandbox", "update", "agents", "agents/look", "accounts"};
    if (std::none_of(std::begin(verbs), std::end(verbs), [&](const char* v) { return verb == v; }))
        return Reply::message(404, "Nothing is served at " + path + ".");
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    if (verb == "test") return s.test(*parsed);
    if (verb == "add") return s.add(*parsed);
    if (verb == "remove") return s.remove(*parsed);
    if (verb == "check") return s.check(*parsed, now);
    if (verb == "docker") return s.installDocker(*parsed, now);
    if (verb == "sandbox") return s.sandbox(*parsed, now);
    if (verb == "agents/look") return s.lookAgents(*parsed);
    if (verb == "agents") return s.installAgents(*parsed);
    if (verb == "accounts") {
        // The bridge copies from its own list of accounts, as its accounts family reads it.
        Reply list = AccountsRoutes::answer(sim, "GET", "/companion/accounts", "", now);
        return s.copyAccounts(*parsed, nlohmann::json::parse(list.body, nullptr, false));
    }
    return s.update(*parsed);
}

} // namespace orvan::sim::HostRoutes
