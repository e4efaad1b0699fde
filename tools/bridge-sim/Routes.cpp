#include "Routes.h"

#include "AccountsRoutes.h"
#include "DiagnosticsRoutes.h"
#include "FeedbackRoutes.h"
#include "FolderRoutes.h"
#include "InviteRoutes.h"
#include "JoinRoutes.h"
#include "OwnerSetupRoutes.h"
#include "HostRoutes.h"
#include "RemoteRoutes.h"
#include "SignInRoutes.h"
#include "SandboxRoutes.h"
#include "TunnelRoutes.h"
#include <cctype>
#include <functional>
#include <vector>

namespace orvan::sim::Routes {

using nlohmann::json;

namespace {

struct Route {
    const char* method;
    const char* path;
    // Null for a path that reads no body.
    std::function<Reply(State&, const json&, TimePoint)> write;
    std::function<Reply(Sim&, TimePoint)> read;
};

const std::vector<Route>& table() {
    static const std::vector<Route> routes = {
        {"GET", "/healthz", nullptr,
         [](Sim& sim, TimePoint) {
             // Without /healthz the process looks like something that isn't the bridge.
             if (sim.misbehaviour.noHealthz) return Reply::message(404, "Nothing is served at /healthz.");
             return Reply::json(200, json{{"ok", true}});
         }},
        {"GET", "/companion/status", nullptr,
         [](Sim& sim, TimePoint now) { return Reply::json(200, sim.state.status(now)); }},
        {"GET", "/local/devices", nullptr,
         [](Sim& sim, TimePoint now) { return Reply::json(200, sim.state.devices(now)); }},
        {"POST", "/companion/screen/stop", nullptr, [](Sim& sim, TimePoint) { return sim.state.stopScreen(); }},
        {"POST", "/companion/name", [](State& s, const json& b, TimePoint) { return s.setName(b); }, nullptr},
        {"POST", "/companion/remote", [](State& s, const json& b, TimePoint) { return s.setRemote(b); }, nullptr},
        {"POST", "/companion/sidebar", [](State& s, const json& b, TimePoint) { return s.setSidebar(b); }, nullptr},
        {"POST", "/companion/screen", [](State& s, const json& b, TimePoint) { return s.setScreen(b); }, nullptr},
        {"POST", "/companion/phone", [](State& s, const json& b, TimePoint) { return s.removePhone(b); }, nullptr},
        {"POST", "/companion/phone/role", [](State& s, const json& b, TimePoint now) { return s.setRole(b, now); },
         nullptr},
        {"POST", "/local/devices/extend", [](State& s, const json& b, TimePoint) { return s.extendGuest(b); },
         nullptr},
        {"POST", "/companion/diagnostics", [](State& s, const json& b, TimePoint) { return s.setDiagnostics(b); },
         nullptr},
    };
    return routes;
}

} // namespace

std::string unescaped(const std::string& raw) {
    std::string out;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '%' && i + 2 < raw.size() && std::isxdigit(static_cast<unsigned char>(raw[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(raw[i + 2]))) {
            out.push_back(static_cast<char>(std::stoi(raw.substr(i + 1, 2), nullptr, 16)));
            i += 2;
        } else {
            out.push_back(raw[i]);
        }
    }
    return out;
}

std::optional<json> object(const std::string& body, bool emptyIsObject) {
    if (body.empty() && emptyIsObject) return json::object();
    json value = json::parse(body, nullptr, false);
    if (value.is_discarded() || !value.is_object()) return std::nullopt;
    return value;
}

Reply answer(Sim& sim, const std::string& method, const std::string& target, const std::string& body,
             TimePoint now) {
    // Routes that read a query are handed the whole target; everything else matches on the path.
    const std::string path = target.substr(0, target.find('?'));
    // Phones that were on their way have arrived by the time anyone looks.
    InviteRoutes::settle(sim, now);
    if (InviteRoutes::owns(path)) return InviteRoutes::answer(sim, method, target, body, now);
    if (JoinRoutes::owns(path)) return JoinRoutes::answer(sim, method, path, body, now);
    if (OwnerSetupRoutes::owns(path)) return OwnerSetupRoutes::answer(sim, method, path, body, now);
    if (AccountsRoutes::owns(path)) return AccountsRoutes::answer(sim, method, target, body, now);
    if (SandboxRoutes::owns(path)) return SandboxRoutes::answer(sim, method, target, body, now);
    if (TunnelRoutes::owns(path)) return TunnelRoutes::answer(sim, method, path, body, now);
    if (DiagnosticsRoutes::owns(path)) return DiagnosticsRoutes::answer(sim, method, path, body, now);
    // Before the computers' family, whose prefix it shares.
    if (SignInRoutes::owns(path)) return SignInRoutes::answer(sim, method, path, body, now);
    if (HostRoutes::owns(path)) return HostRoutes::answer(sim, method, path, body, now);
    if (FolderRoutes::owns(path)) return FolderRoutes::answer(sim, method, path, body, now);
    if (FeedbackRoutes::owns(path)) return FeedbackRoutes::answer(sim, method, path, body, now);
    if (RemoteRoutes::owns(path)) return RemoteRoutes::answer(sim, method, path, body, now);
    bool known = false;
    for (const auto& route : table()) {
        if (path != route.path) continue;
        known = true;
        // HEAD is answered like GET, without the body.
        if (method != route.method && !(method == "HEAD" && std::string(route.method) == "GET")) continue;
        if (route.read) return route.read(sim, now);
        auto parsed = object(body, false);
        if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
        return route.write(sim.state, *parsed, now);
    }
    if (known) return Reply::message(405, method + " is not how " + path + " is used.");
    return Reply::message(404, "Nothing is served at " + path + ".");
}

std::string wrongShape(const std::string& path) {
    // Each of these is a well-formed answer whose one wrong type must fail the whole record.
    if (path == "/companion/status") return R"({"name":"This Mac","on":"yes","phones":[]})";
    if (path == "/local/devices") return R"({"devices":{"id":"not-a-list"}})";
    if (path == "/healthz") return R"(["ok"])";
    if (path == "/companion/hosts") return R"({"hosts":[],"ssh":"pi","bridge":"1.8.2"})";
    return R"(["this", "is", "not", "an", "object"])";
}

} // namespace orvan::sim::Routes
