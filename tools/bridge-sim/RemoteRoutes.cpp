#include "RemoteRoutes.h"

#include "RemoteState.h"
#include "Routes.h"

namespace orvan::sim::RemoteRoutes {

namespace {

constexpr const char* base = "/companion/remotes";

RemoteState& state() {
    static RemoteState kept = RemoteState::seeded();
    return kept;
}

} // namespace

bool owns(const std::string& path) { return path == base || path.rfind(std::string(base) + "/", 0) == 0; }

Reply answer(Sim&, const std::string& method, const std::string& path, const std::string& body, TimePoint) {
    RemoteState& s = state();
    if (path == base) {
        if (method != "GET" && method != "HEAD") return Reply::message(405, method + " is not how " + path + " is used.");
        return Reply::json(200, s.list());
    }
    const std::string verb = path.substr(std::string(base).size() + 1);
    if (verb != "test" && verb != "add" && verb != "remove") return Reply::message(404, "Nothing is served at " + path + ".");
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    if (verb == "test") return s.test(*parsed);
    if (verb == "add") return s.add(*parsed);
    return s.remove(*parsed);
}

} // namespace orvan::sim::RemoteRoutes
