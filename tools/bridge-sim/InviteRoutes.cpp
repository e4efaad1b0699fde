#include "InviteRoutes.h"

#include "InviteCode.h"
#include "JoinState.h"
#include "Routes.h"

#include <algorithm>
#include <optional>
#include <random>
#include <vector>

namespace orvan::sim::InviteRoutes {

using nlohmann::json;
using namespace std::chrono_literals;

namespace {

constexpr const char* makePath = "/local/invite";
constexpr const char* codePath = "/local/invite.png";
constexpr const char* listPath = "/local/invites";
constexpr const char* scopePath = "/local/scope";
constexpr std::size_t mostNameScalars = 40;
constexpr std::size_t mostScope = 64;

struct Invite {
    std::string id;
    std::string secret;
    std::string name;
    std::string role;
    std::string kind;
    TimePoint made;
    TimePoint expires;
    std::optional<json> guest;
    bool used = false;
    bool cancelled = false;
    std::optional<TimePoint> joinsAt; // a QR invite's phone, on its way
};

struct Invites {
    std::vector<Invite> all;
    bool older = false;
    std::optional<std::string> link; // every link invite comes out with this link
    double joinAfter = 4;
    std::mt19937_64 random{std::random_device{}()};

    std::string hex(int bytes) {
        static const char* digits = "0123456789abcdef";
        std::string out;
        for (int i = 0; i < bytes * 2; ++i) out.push_back(digits[random() % 16]);
        return out;
    }
    std::string secret() {
        static const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
        std::string out;
        for (int i = 0; i < 43; ++i) out.push_back(alphabet[random() % 64]);
        return out;
    }
    Invite* find(const std::string& id) {
        auto it = std::find_if(all.begin(), all.end(), [&](const Invite& i) { return i.id == id; });
        return it == all.end() ? nullptr : &*it;
    }
};

Invites& invites() {
    static Invites kept;
    return kept;
}

bool open(const Invite& invite, TimePoint now) { return !invite.used && !invite.cancelled && invite.expires > now; }

std::string linkOf(const Invite& invite) {
    if (invite.kind == "link" && invites().link) return *invites().link;
    return "https://join.orvan.example/i/" + invite.id + "#v1." + invite.secret;
}

std::size_t scalars(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}

json scope() {
    return json{{"projects",
                 json::array({{{"id", "orvan-site"}, {"name", "Orvan site"}},
                              {{"id", "payments-api"}, {"name", "Payments API"}},
                              {{"id", "scratch"}, {"name", "  "}}})},
                {"sessions",
                 json::array({{{"id", "s-login"}, {"name", "Fix the login page"}, {"projectName", "Orvan site"}},
                              {{"id", "s-ninja"},
                               {"name", ""},
                               {"goal", "\n\n  Move the build to Ninja\nand keep the old scripts"},
                               {"projectName", "Payments API"}}})}};
}

bool knownScope(const json& list, const char* key) {
    json known = scope()[key];
    return std::all_of(list.begin(), list.end(), [&](const json& id) {
        return id.is_string() && std::any_of(known.begin(), known.end(), [&](const json& row) { return row["id"] == id; });
    });
}

// A guest's scope as the companion must send it; a sentence for what is wrong with it.
std::optional<std::string> badGuest(const json& guest, TimePoint now) {
    if (!guest.is_object()) return "A guest invite needs a \"guest\" object.";
    for (const char* key : {"projects", "sessions"}) {
        if (!guest.contains(key) || !guest[key].is_array()) return std::string("\"") + key + "\" must be a list.";
        if (guest[key].size() > mostScope) return "A guest can be given at most 64 projects and 64 sessions.";
        if (!knownScope(guest[key], key)) return "One of the picked projects or sessions is not on this Mac.";
    }
    if (guest["projects"].empty() && guest["sessions"].empty()) return "Pick at least one project or session.";
    if (!guest.contains("mode") || (guest["mode"] != "watch" && guest["mode"] != "reply"))
        return "A guest watches or replies.";
    auto ends = guest.contains("ends") && guest["ends"].is_string() ? Rfc3339::parse(guest["ends"].get<std::string>())
                                                                    : std::nullopt;
    if (!ends) return "The end date was not understood.";
    if (*ends <= now) return "The end date has passed.";
    return std::nullopt;
}

Reply make(Invites& s, const json& body, TimePoint now) {
    if (body.contains("name") && !body["name"].is_string()) return Reply::message(400, "name must be text.");
    std::string name = body.value("name", "");
    if (scalars(name) > mostNameScalars) return Reply::message(400, "A name has at most 40 characters.");
    std::string role = body.contains("role") && body["role"].is_string() ? body["role"].get<std::string>() : "";
    std::string kind = body.contains("kind") && body["kind"].is_string() ? body["kind"].get<std::string>() : "";
    if (role != "member" && role != "guest") return Reply::message(400, "An invite is for a member or a guest.");
    if (kind != "qr" && kind != "link") return Reply::message(400, "An invite is a QR code or a link.");
    Invite invite;
    if (role == "guest") {
        if (auto wrong = badGuest(body.contains("guest") ? body["guest"] : json(), now)) return Reply::message(400, *wrong);
        invite.guest = body["guest"];
    }
    invite.id = s.hex(8);
    invite.secret = s.secret();
    invite.name = name;
    invite.role = role;
    invite.kind = kind;
    invite.made = now;
    invite.expires = now + (kind == "qr" ? std::chrono::duration_cast<TimePoint::duration>(10min)
                                         : std::chrono::duration_cast<TimePoint::duration>(24h));
    if (kind == "qr")
        invite.joinsAt = now + std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double>(s.joinAfter));
    s.all.push_back(invite);
    // An older bridge made the invite but answered nothing about it.
    if (s.older) return Reply::done();
    return Reply::json(200, json{{"id", invite.id}, {"link", linkOf(invite)}, {"kind", kind},
                                 {"expires", Rfc3339::string(invite.expires)}});
}

Reply picture(const Invite& invite) {
    auto png = InviteCode::png(linkOf(invite));
    if (!png) return Reply::message(500, "The code could not be drawn.");
    return Reply{200, *png, "image/png"};
}

Reply code(Invites& s, const std::string& target, TimePoint now) {
    auto query = target.find("?id=");
    if (query == std::string::npos) {
        // What older bridges serve: a new member's code each time it is asked for.
        Invite invite;
        invite.id = s.hex(8);
        invite.secret = s.secret();
        invite.role = "member";
        invite.kind = "qr";
        invite.made = now;
        invite.expires = now + std::chrono::duration_cast<TimePoint::duration>(10min);
        invite.joinsAt = now + std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double>(s.joinAfter));
        s.all.push_back(invite);
        return picture(invite);
    }
    const std::string id = Routes::unescaped(target.substr(query + 4));
    Invite* invite = s.find(id);
    if (!invite || !open(*invite, now)) return Reply::message(404, "That invite is used, cancelled or over.");
    return picture(*invite);
}

json listed(const Invites& s, TimePoint now) {
    json list = json::array();
    for (const auto& invite : s.all) {
        if (!open(invite, now)) continue;
        json row{{"id", invite.id}, {"name", invite.name}, {"role", invite.role}, {"kind", invite.kind},
                 {"expires", Rfc3339::string(invite.expires)}};
        if (invite.guest) row["guest"] = *invite.guest;
        list.push_back(row);
    }
    return json{{"invites", list}};
}

Reply cancel(Invites& s, const std::string& id, TimePoint now) {
    Invite* invite = s.find(id);
    if (!invite || !open(*invite, now)) return Reply::message(404, "That invite is already used, cancelled or over.");
    invite->cancelled = true;
    return Reply::done();
}

} // namespace

bool owns(const std::string& path) {
    return path == makePath || path == codePath || path == listPath || path == scopePath ||
           path.rfind(std::string(listPath) + "/", 0) == 0;
}

Reply answer(Sim&, const std::string& method, const std::string& target, const std::string& body, TimePoint now) {
    Invites& s = invites();
    const std::string path = target.substr(0, target.find('?'));
    const bool read = method == "GET" || method == "HEAD";
    auto wrongMethod = [&] { return Reply::message(405, method + " is not how " + path + " is used."); };
    if (path == scopePath) return read ? Reply::json(200, scope()) : wrongMethod();
    if (path == listPath) return read ? Reply::json(200, listed(s, now)) : wrongMethod();
    if (path == codePath) return read ? code(s, target, now) : wrongMethod();
    if (path == makePath) {
        if (method != "POST") return wrongMethod();
        auto parsed = Routes::object(body, false);
        if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
        return make(s, *parsed, now);
    }
    // /local/invites/<id>/cancel, the id escaped as one segment.
    const std::string rest = path.substr(std::string(listPath).size() + 1);
    const auto slash = rest.find('/');
    if (slash == std::string::npos || rest.substr(slash) != "/cancel" || slash == 0)
        return Reply::message(404, "Nothing is served at " + path + ".");
    if (method != "POST") return wrongMethod();
    if (!Routes::object(body, true)) return Reply::message(400, "The request body was not a JSON object.");
    return cancel(s, Routes::unescaped(rest.substr(0, slash)), now);
}

void settle(Sim& sim, TimePoint now) {
    Invites& s = invites();
    for (auto& invite : s.all) {
        if (!invite.joinsAt || *invite.joinsAt > now || !open(invite, now)) continue;
        invite.used = true;
        invite.joinsAt.reset();
        Phone phone;
        phone.id = "phone-" + std::to_string(sim.state.nextPhone++);
        if (!invite.name.empty()) phone.name = invite.name;
        phone.role = invite.role;
        if (invite.guest) phone.guest = *invite.guest;
        sim.state.phones.push_back(phone);
    }
}

bool ownsControl(const std::string& name) { return name == "invites" || name == "follow"; }

Reply control(Sim&, const std::string& name, const json& body, TimePoint now) {
    Invites& s = invites();
    if (name == "invites") {
        if (body.contains("older")) {
            if (!body["older"].is_boolean()) return Reply::message(400, "Give \"older\" as true or false.");
            s.older = body["older"].get<bool>();
        }
        if (body.contains("link")) {
            if (body["link"].is_null()) s.link.reset();
            else if (body["link"].is_string()) s.link = body["link"].get<std::string>();
            else return Reply::message(400, "Give \"link\" as text or null.");
        }
        if (body.contains("joinAfter")) {
            if (!body["joinAfter"].is_number() || body["joinAfter"].get<double>() < 0)
                return Reply::message(400, "Give \"joinAfter\" in seconds, 0 or more.");
            s.joinAfter = body["joinAfter"].get<double>();
        }
        return Reply::done();
    }
    std::string id = body.contains("id") && body["id"].is_string() ? body["id"].get<std::string>() : "";
    Invite* invite = s.find(id);
    if (!invite || invite->kind != "link" || !open(*invite, now))
        return Reply::message(404, "No open link invite has that id.");
    invite->used = true;
    const std::string asker =
        body.contains("name") && body["name"].is_string() ? body["name"].get<std::string>() : invite->name;
    const PendingJoin& request = JoinState::shared().ask(invite->id, asker, invite->role, invite->guest, now);
    return Reply::json(200, json{{"id", request.id}, {"code", request.code}});
}

json joins(TimePoint) { return JoinState::shared().listed()["joins"]; }

} // namespace orvan::sim::InviteRoutes
