#include "AccountsRoutes.h"

#include "AccountsState.h"
#include "Routes.h"

#include <cstdlib>
#include <functional>
#include <memory>

namespace orvan::sim::AccountsRoutes {

using nlohmann::json;

namespace {

constexpr const char* base = "/companion/accounts";
constexpr const char* usagePath = "/companion/accounts/usage";
constexpr const char* chainPath = "/companion/accounts/chain";
constexpr const char* modelsPath = "/companion/bedrock/models";
constexpr const char* limitsPath = "/companion/limits";

// One process serves one bridge, and the server's lock guards every call, so the accounts live
// here rather than in the shared state that other families reset.
AccountsState& state(TimePoint now) {
    static std::unique_ptr<AccountsState> kept;
    if (!kept) {
        const char* dir = std::getenv("ORVAN_DIR");
        const char* data = std::getenv("XDG_DATA_HOME");
        const char* home = std::getenv("HOME");
        std::string folder = dir && *dir     ? std::string(dir)
                             : data && *data ? std::string(data) + "/Orvan"
                                             : std::string(home ? home : "") + "/.local/share/Orvan";
        kept = std::make_unique<AccountsState>(AccountsState::seeded(now, folder));
    }
    return *kept;
}

Reply write(const std::string& body, const std::function<Reply(const json&)>& act) {
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    return act(*parsed);
}

} // namespace

bool owns(const std::string& path) {
    return path == base || path.rfind(std::string(base) + "/", 0) == 0 || path == modelsPath || path == limitsPath;
}

Reply answer(Sim& sim, const std::string& method, const std::string& full, const std::string& body, TimePoint now) {
    AccountsState& s = state(now);
    std::string path = full.substr(0, full.find('?'));
    std::string query = full.size() > path.size() ? full.substr(path.size() + 1) : "";
    // Reading the vendors takes a while; a test that wants another pace says so through /_sim/slow.
    static bool paced = false;
    if (!paced) {
        paced = true;
        if (!sim.misbehaviour.faultFor(usagePath).any()) sim.misbehaviour.slow(usagePath, usageSeconds);
    }
    const bool read = method == "GET" || method == "HEAD";
    s.settle(now);
    if (path == limitsPath) {
        if (read) return s.limits(nullptr);
        if (method == "POST") return write(body, [&](const json& b) { return s.limits(&b); });
        return Reply::message(405, method + " is not how " + path + " is used.");
    }
    if (path == modelsPath) {
        if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
        return write(body, [&](const json& b) { return s.bedrockModels(b); });
    }
    if (path == chainPath) {
        if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
        return write(body, [&](const json& b) { return s.setChain(b); });
    }
    if (path == base) {
        if (read) return Reply::json(200, s.list());
        if (method == "POST") return write(body, [&](const json& b) { return s.add(b); });
        return Reply::message(405, method + " is not how " + path + " is used.");
    }
    if (path == usagePath) {
        if (!read) return Reply::message(405, method + " is not how " + path + " is used.");
        bool fresh = query == "fresh=1" || query.find("fresh=1&") == 0 || query.find("&fresh=1") != std::string::npos;
        return Reply::json(200, s.usage(fresh, now));
    }
    std::string rest = path.substr(std::string(base).size() + 1);
    auto slash = rest.find('/');
    if (slash == std::string::npos || rest.find('/', slash + 1) != std::string::npos)
        return Reply::message(404, "Nothing is served at " + path + ".");
    std::string id = Routes::unescaped(rest.substr(0, slash));
    std::string verb = rest.substr(slash + 1);
    if (verb != "label" && verb != "remove" && verb != "key" && verb != "login" && verb != "portable" &&
        verb != "bedrock")
        return Reply::message(404, "Nothing is served at " + path + ".");
    if (verb == "portable" && read) return s.portable(id, false);
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    return write(body, [&](const json& b) {
        if (verb == "label") return s.setLabel(id, b);
        if (verb == "remove") return s.remove(id, b);
        if (verb == "login") return s.login(id, now);
        if (verb == "portable") return s.portable(id, true);
        if (verb == "bedrock") return s.setBedrock(id, b);
        return s.setKey(id, b);
    });
}

} // namespace orvan::sim::AccountsRoutes
