#include "OwnerSetupRoutes.h"

#include "InviteCode.h"
#include "Rfc3339.h"
#include "Routes.h"

#include <algorithm>
#include <optional>
#include <random>

namespace orvan::sim::OwnerSetupRoutes {

using nlohmann::json;
using namespace std::chrono_literals;

namespace {

constexpr const char* setupPath = "/local/owner-setup";
constexpr const char* codePath = "/local/owner-setup.png";
constexpr const char* cancelPath = "/local/owner-setup/cancel";

struct Code {
    std::string secret;
    TimePoint expires;
};

struct OwnerSetup {
    std::optional<Code> code;
    std::optional<std::string> refuse;
    int cancelFails = 0;
    bool noPicture = false;
    std::mt19937_64 random{std::random_device{}()};
};

OwnerSetup& kept() {
    static OwnerSetup setup;
    return setup;
}

bool hasOwner(const State& state) {
    return std::any_of(state.phones.begin(), state.phones.end(), [](const Phone& p) { return p.role == "owner"; });
}

bool live(OwnerSetup& s, TimePoint now) {
    if (s.code && s.code->expires <= now) s.code.reset();
    return s.code.has_value();
}

Reply make(Sim& sim, OwnerSetup& s, TimePoint now) {
    if (s.refuse) {
        const std::string& why = *s.refuse;
        if (why == "busy") return Reply::refusal(503, "busy", "The earlier code is still being ended.");
        if (why == "too_many") return Reply::refusal(429, "too_many", "Too many invites are waiting.");
        if (why == "host") return Reply::refusal(409, "host", "This computer was added by another Mac.");
        if (why == "owner_exists") return Reply::refusal(409, "owner_exists", "This Mac has an owner.");
        if (why == "screen_shared") return Reply::refusal(409, "screen_shared", "A desktop is being watched.");
        return Reply::message(500, "The bridge could not make a code.");
    }
    if (hasOwner(sim.state)) return Reply::refusal(409, "owner_exists", "This Mac has an owner.");
    if (!sim.state.screen.watching.empty())
        return Reply::refusal(409, "screen_shared", "A desktop is being watched.");
    static const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    Code code;
    for (int i = 0; i < 32; ++i) code.secret.push_back(alphabet[s.random() % 62]);
    code.expires = now + std::chrono::duration_cast<TimePoint::duration>(10min);
    s.code = code;
    return Reply::json(200, json{{"expires", Rfc3339::string(code.expires)}});
}

Reply picture(OwnerSetup& s, TimePoint now) {
    if (!live(s, now)) return Reply::message(404, "No setup code is live.");
    if (s.noPicture) return Reply{200, "not a picture", "image/png"};
    auto png = InviteCode::png("https://join.orvan.example/o/" + s.code->secret);
    if (!png) return Reply::message(500, "The code could not be drawn.");
    return Reply{200, *png, "image/png"};
}

} // namespace

bool owns(const std::string& path) { return path == setupPath || path == codePath || path == cancelPath; }

Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now) {
    OwnerSetup& s = kept();
    const bool read = method == "GET" || method == "HEAD";
    auto wrongMethod = [&] { return Reply::message(405, method + " is not how " + path + " is used."); };
    if (path == codePath) return read ? picture(s, now) : wrongMethod();
    if (path == setupPath && read) {
        const bool available = !hasOwner(sim.state) && s.refuse != "host";
        return Reply::json(200, json{{"available", available}, {"live", live(s, now)}});
    }
    if (method != "POST") return wrongMethod();
    if (!Routes::object(body, true)) return Reply::message(400, "The request body was not a JSON object.");
    if (path == setupPath) return make(sim, s, now);
    if (s.cancelFails > 0) {
        --s.cancelFails;
        return Reply::message(500, "The code could not be ended.");
    }
    s.code.reset();
    return Reply::done();
}

bool ownsControl(const std::string& name) { return name == "owner-setup"; }

Reply control(Sim& sim, const std::string&, const json& body, TimePoint now) {
    OwnerSetup& s = kept();
    if (body.contains("refuse")) {
        if (body["refuse"].is_null()) s.refuse.reset();
        else if (body["refuse"].is_string()) s.refuse = body["refuse"].get<std::string>();
        else return Reply::message(400, "Give \"refuse\" as text or null.");
    }
    if (body.contains("cancelFails")) {
        if (!body["cancelFails"].is_number_integer() || body["cancelFails"].get<int>() < 0)
            return Reply::message(400, "Give \"cancelFails\" as a whole number, 0 or more.");
        s.cancelFails = body["cancelFails"].get<int>();
    }
    if (body.contains("noPicture")) {
        if (!body["noPicture"].is_boolean()) return Reply::message(400, "Give \"noPicture\" as true or false.");
        s.noPicture = body["noPicture"].get<bool>();
    }
    if (body.contains("take") && body["take"] == true) {
        if (!live(s, now)) return Reply::message(404, "No setup code is live.");
        s.code.reset();
        Phone phone;
        phone.id = "phone-" + std::to_string(sim.state.nextPhone++);
        phone.name = "Owner\u2019s iPhone";
        phone.role = "owner";
        phone.ownerSince = Rfc3339::string(now);
        sim.state.phones.push_back(phone);
        return Reply::json(200, json{{"id", phone.id}});
    }
    return Reply::done();
}

} // namespace orvan::sim::OwnerSetupRoutes
