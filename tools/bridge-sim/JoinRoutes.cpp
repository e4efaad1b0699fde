#include "JoinRoutes.h"

#include "JoinState.h"
#include "Routes.h"

namespace orvan::sim::JoinRoutes {

using nlohmann::json;

namespace {

constexpr const char* listPath = "/local/joins";

std::string text(const json& body, const char* key) {
    return body.contains(key) && body[key].is_string() ? body[key].get<std::string>() : std::string();
}

Reply decide(Sim& sim, const std::string& id, bool approve, const json& body, TimePoint now) {
    JoinState& joins = JoinState::shared();
    PendingJoin* join = joins.find(id);
    if (!join) return Reply::message(404, "Nobody with that request is waiting.");
    if (text(body, "code") != join->code || text(body, "fp") != join->fp)
        return Reply::refusal(409, "join_changed", "That request changed; check the code again.");
    if (approve) {
        Phone phone;
        phone.id = "phone-" + std::to_string(sim.state.nextPhone++);
        if (!join->name.empty()) phone.name = join->name;
        phone.role = join->role.empty() ? "member" : join->role;
        if (phone.role == "owner") phone.ownerSince = Rfc3339::string(now);
        if (join->guest) phone.guest = *join->guest;
        sim.state.phones.push_back(phone);
    }
    joins.remove(id);
    return Reply::done();
}

} // namespace

bool owns(const std::string& path) { return path == listPath || path.rfind(std::string(listPath) + "/", 0) == 0; }

Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now) {
    if (path == listPath) {
        if (method != "GET" && method != "HEAD") return Reply::message(405, method + " is not how " + path + " is used.");
        return Reply::json(200, JoinState::shared().listed());
    }
    // /local/joins/<id>/approve or /deny, the id escaped as one segment.
    const std::string rest = path.substr(std::string(listPath).size() + 1);
    const auto slash = rest.find('/');
    const std::string verb = slash == std::string::npos ? "" : rest.substr(slash + 1);
    if (slash == 0 || (verb != "approve" && verb != "deny")) return Reply::message(404, "Nothing is served at " + path + ".");
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    return decide(sim, Routes::unescaped(rest.substr(0, slash)), verb == "approve", *parsed, now);
}

bool ownsControl(const std::string& name) { return name == "join-code"; }

Reply control(Sim&, const std::string&, const json& body, TimePoint) {
    JoinState& joins = JoinState::shared();
    PendingJoin* join = body.contains("id") ? joins.find(text(body, "id"))
                                            : (joins.pending.empty() ? nullptr : &joins.pending.front());
    if (!join) return Reply::message(404, "No request with that id is waiting.");
    std::string code = body.contains("code") ? text(body, "code") : joins.code();
    if (code.size() != 4 || code.find_first_not_of("0123456789") != std::string::npos)
        return Reply::message(400, "Give \"code\" as 4 digits.");
    join->code = code;
    return Reply::json(200, json{{"id", join->id}, {"code", join->code}});
}

} // namespace orvan::sim::JoinRoutes
