#include "TunnelSim.h"

namespace orvan::sim {

using nlohmann::json;
using namespace std::chrono_literals;

namespace {
constexpr auto domainStarts = 3s;
constexpr auto quickStarts = 2s;
constexpr const char* quickAddress = "https://amber-river-7f3a.tunnel.example.net";
constexpr const char* unchecked = "The tunnel has an address. Orvan has not checked that a phone can connect, and "
                                  "cannot tell its callers apart.";

bool plausibleHostname(const std::string& name) {
    if (name.empty() || name.find('.') == std::string::npos || name.size() > 253) return false;
    for (char c : name)
        if (!(std::islower(static_cast<unsigned char>(c)) || std::isdigit(static_cast<unsigned char>(c)) || c == '.' ||
              c == '-'))
            return false;
    return true;
}
} // namespace

json TunnelSim::read(TimePoint now) const {
    json out = {{"hostname", hostname},
                {"token", !token.empty()},
                {"quick", quick},
                {"tailscale", json::array({"100.101.102.103", "fd7a:115c:a1e0::1"})},
                {"origin", "http://127.0.0.1:8788"}};
    if (hostname.empty()) {
        out["status"] = "";
    } else if (token.rfind("bad", 0) == 0) {
        out["status"] = "refused";
        out["reason"] = "The connector answered: Unauthorized: Invalid tunnel secret";
    } else {
        out["status"] = saved && now - *saved < domainStarts ? "starting" : "up";
    }
    if (quick) {
        bool up = quickSince && now - *quickSince >= quickStarts;
        out["quickStatus"] = up ? "up" : "starting";
        if (up) {
            out["quickURL"] = quickAddress;
            out["quickReason"] = unchecked;
        }
    }
    return out;
}

Reply TunnelSim::write(const json& body, TimePoint now) {
    if (body.contains("quick")) {
        if (!body["quick"].is_boolean()) return Reply::message(400, "quick must be true or false.");
        quick = body["quick"].get<bool>();
        quickSince = now;
        return Reply::done();
    }
    if (!body.contains("hostname") || !body["hostname"].is_string())
        return Reply::message(400, "The request needs a hostname.");
    if (body.contains("token") && !body["token"].is_string()) return Reply::message(400, "token must be text.");
    std::string name = body["hostname"].get<std::string>();
    std::string given = body.value("token", std::string());
    if (name.empty() && body.contains("token") && given.empty()) {
        hostname.clear();
        token.clear();
        saved.reset();
        return Reply::done();
    }
    if (!plausibleHostname(name)) return Reply::message(400, "That hostname is not valid.");
    if (given.empty() && token.empty()) return Reply::message(400, "A tunnel token is needed.");
    hostname = name;
    if (!given.empty()) token = given;
    saved = now;
    return Reply::done();
}

} // namespace orvan::sim
