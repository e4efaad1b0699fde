#include "SignInRoutes.h"

#include "Routes.h"
#include "SignInState.h"

namespace orvan::sim::SignInRoutes {

namespace {

constexpr const char* base = "/companion/hosts/signin";

// Beside the computers they run on, and like them untouched by a reseed of the shared state.
SignInState& state() {
    static SignInState kept;
    return kept;
}

} // namespace

bool owns(const std::string& path) { return path == base || path.rfind(std::string(base) + "/", 0) == 0; }

Reply answer(Sim&, const std::string& method, const std::string& path, const std::string& body, TimePoint now) {
    const std::string verb = path == base ? std::string() : path.substr(std::string(base).size() + 1);
    if (!verb.empty() && verb != "tools" && verb != "state" && verb != "code" && verb != "cancel")
        return Reply::message(404, "Nothing is served at " + path + ".");
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    SignInState& s = state();
    if (verb.empty()) return s.start(*parsed, now);
    if (verb == "tools") return s.tools(*parsed, now);
    if (verb == "state") return s.read(*parsed, now);
    if (verb == "code") return s.code(*parsed, now);
    return s.cancel(*parsed, now);
}

} // namespace orvan::sim::SignInRoutes
