#include "Control.h"

#include "FeedbackRoutes.h"
#include "InviteRoutes.h"
#include "JoinRoutes.h"
#include "OwnerSetupRoutes.h"
#include "Routes.h"
#include "Seeds.h"

namespace orvan::sim::Control {

using nlohmann::json;

namespace {

bool isPath(const json& body) {
    if (!body.contains("path") || !body["path"].is_string()) return false;
    std::string path = body["path"].get<std::string>();
    return path == Misbehaviour::everyPath || path.rfind('/', 0) == 0;
}

const char* const needsPath = "Give a \"path\" beginning with \"/\", or \"*\".";

Reply fault(Misbehaviour& misbehaviour, const std::string& kind, const json& body) {
    if (!isPath(body)) return Reply::message(400, needsPath);
    std::string path = body["path"].get<std::string>();
    if (kind == "fail") {
        if (!body.contains("status") || !body["status"].is_number_integer() || body["status"].get<int>() < 100 ||
            body["status"].get<int>() > 599)
            return Reply::message(400, "Give a \"status\" from 100 to 599.");
        std::string answer = Misbehaviour::defaultFailBody();
        if (body.contains("body")) answer = body["body"].is_string() ? body["body"].get<std::string>() : body["body"].dump();
        misbehaviour.fail(path, body["status"].get<int>(), answer);
    } else if (kind == "slow") {
        if (!body.contains("seconds") || !body["seconds"].is_number() || body["seconds"].get<double>() < 0)
            return Reply::message(400, "Give \"seconds\", 0 or more.");
        misbehaviour.slow(path, body["seconds"].get<double>());
    } else if (kind == "garbage") {
        misbehaviour.garbage(path);
    } else if (kind == "wrong-type") {
        misbehaviour.wrongType(path);
    } else {
        misbehaviour.drop(path);
    }
    return Reply::done();
}

Reply flag(const json& body, const char* key, bool& field) {
    if (!body.contains(key) || !body[key].is_boolean())
        return Reply::message(400, std::string("Give \"") + key + "\" as true or false.");
    field = body[key].get<bool>();
    return Reply::done();
}

} // namespace

bool owns(const std::string& path) { return path.rfind(prefix, 0) == 0; }

Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& text, TimePoint now) {
    if (method != "POST") return Reply::message(405, "The control paths take POST.");
    auto parsed = Routes::object(text, true);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    const json& body = *parsed;
    std::string name = path.substr(std::string(prefix).size());

    if (name == "fail" || name == "slow" || name == "garbage" || name == "wrong-type" || name == "drop")
        return fault(sim.misbehaviour, name, body);
    if (name == "keys") {
        bool keep = true;
        Reply reply = flag(body, "refuse", keep);
        if (reply.status == 204) sim.misbehaviour.refuseEveryKey = keep;
        return reply;
    }
    if (name == "healthz") {
        bool on = true;
        Reply reply = flag(body, "on", on);
        if (reply.status == 204) sim.misbehaviour.noHealthz = !on;
        return reply;
    }
    if (name == "clear") {
        if (body.contains("path")) {
            if (!isPath(body)) return Reply::message(400, needsPath);
            sim.misbehaviour.clear(body["path"].get<std::string>());
        } else {
            sim.misbehaviour.clear();
        }
        return Reply::done();
    }
    if (name == "seed") {
        auto seed = body.contains("seed") && body["seed"].is_string() ? Seeds::named(body["seed"].get<std::string>())
                                                                      : std::nullopt;
        if (!seed) return Reply::message(400, "Give \"seed\" as \"demo\" or \"empty\".");
        sim.state = Seeds::make(*seed, now);
        return Reply::done();
    }
    if (InviteRoutes::ownsControl(name)) return InviteRoutes::control(sim, name, body, now);
    if (JoinRoutes::ownsControl(name)) return JoinRoutes::control(sim, name, body, now);
    if (OwnerSetupRoutes::ownsControl(name)) return OwnerSetupRoutes::control(sim, name, body, now);
    if (FeedbackRoutes::ownsControl(name)) return FeedbackRoutes::control(sim, name, body);
    if (name == "phone") return sim.state.addPhone(body, now);
    if (name == "watcher") return sim.state.addWatcher(body, now);
    if (name == "set") return sim.state.set(body);
    if (name == "exit") {
        if (body.contains("code") && !body["code"].is_number_integer())
            return Reply::message(400, "Give \"code\" as a whole number.");
        sim.exitCode = body.value("code", 0);
        return Reply::done();
    }
    return Reply::message(404, "There is no control called \"" + name + "\".");
}

} // namespace orvan::sim::Control
