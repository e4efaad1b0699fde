#include "TunnelRoutes.h"

#include "Routes.h"
#include "TunnelSim.h"

namespace orvan::sim::TunnelRoutes {

namespace {
constexpr const char* base = "/local/tunnel";

// Lives with its routes, as the other families' do; the server's lock guards every call.
TunnelSim& state() {
    static TunnelSim kept;
    return kept;
}
} // namespace

bool owns(const std::string& path) { return path == base; }

Reply answer(Sim&, const std::string& method, const std::string& path, const std::string& body, TimePoint now) {
    if (method == "GET" || method == "HEAD") return Reply::json(200, state().read(now));
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    return state().write(*parsed, now);
}

} // namespace orvan::sim::TunnelRoutes
