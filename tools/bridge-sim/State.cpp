#include "State.h"

#include <algorithm>

namespace orvan::sim {

using nlohmann::json;

namespace {

bool isText(const json& body, const char* key) { return body.contains(key) && body[key].is_string(); }
bool isFlag(const json& body, const char* key) { return body.contains(key) && body[key].is_boolean(); }

std::string trimmed(const std::string& text) {
    const char* blanks = " \t\r\n\v\f";
    auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

const char* const noSuchDevice = "That device is no longer on this Mac.";

json defaultScope(TimePoint ends) {
    return json{{"projects", json::array()},
                {"sessions", json::array()},
                {"mode", "watch"},
                {"ends", Rfc3339::string(ends)}};
}

} // namespace

Phone* State::find(const std::string& id) {
    auto it = std::find_if(phones.begin(), phones.end(), [&](const Phone& phone) { return phone.id == id; });
    return it == phones.end() ? nullptr : &*it;
}

void State::letWatchersGo(TimePoint now) {
    auto& watching = screen.watching;
    for (auto it = watching.begin(); it != watching.end();) {
        if (it->leaves && *it->leaves <= now) {
            if (screen.control == it->name) screen.control.reset();
            it = watching.erase(it);
        } else {
            ++it;
        }
    }
}

std::string State::line() const {
    if (lineOverride) return *lineOverride;
    if (!on) return "Remote control is off. Approved phones reach this Mac on the same Wi-Fi only.";
    if (phones.empty()) return "Remote control is on. No phone is approved yet.";
    if (phones.size() == 1) return "Remote control is on for 1 phone.";
    return "Remote control is on for " + std::to_string(phones.size()) + " phones.";
}

json State::phoneJson(const Phone& phone, bool withScope) const {
    json out{{"id", phone.id}, {"role", phone.role}};
    if (phone.name) out["name"] = *phone.name;
    if (phone.ownerSince) out["ownerSince"] = *phone.ownerSince;
    if (phone.guest && withScope) out["guest"] = *phone.guest;
    return out;
}

json State::status(TimePoint now) {
    letWatchersGo(now);
    json list = json::array();
    for (const auto& phone : phones) list.push_back(phoneJson(phone, !leanStatus));
    json watching = json::array();
    for (const auto& watcher : screen.watching) watching.push_back(watcher.name);
    json screenJson{{"available", screen.available},
                    {"on", screen.on},
                    {"watching", watching},
                    {"phoneFirst", screen.phoneFirst},
                    {"permissions", {{"screen", screen.mayCapture}, {"input", screen.mayControl}}}};
    if (screen.control) screenJson["control"] = *screen.control;
    json out{{"name", name},
             {"on", on},
             {"line", line()},
             {"phones", list},
             {"screen", screenJson},
             {"diagnostics", diagnostics},
             {"diagnosticsAnswered", diagnosticsAnswered}};
    if (sidebar) out["sidebar"] = *sidebar;
    if (tulm) out["tulm"] = *tulm;
    return out;
}

json State::devices(TimePoint now) {
    letWatchersGo(now);
    json list = json::array();
    for (const auto& phone : phones) list.push_back(phoneJson(phone, true));
    return json{{"devices", list}};
}

Reply State::setName(const json& body) {
    if (!isText(body, "name")) return Reply::message(400, "A new name is needed.");
    std::string text = trimmed(body["name"].get<std::string>());
    if (text.empty()) return Reply::message(400, "A name can't be empty.");
    name = text;
    return Reply::done();
}

Reply State::setRemote(const json& body) {
    if (!isFlag(body, "on")) return Reply::message(400, "Say whether remote control is on.");
    on = body["on"].get<bool>();
    return Reply::done();
}

Reply State::setSidebar(const json& body) {
    std::string position = isText(body, "position") ? body["position"].get<std::string>() : "";
    if (position != "left" && position != "right") return Reply::message(400, "The sidebar goes left or right.");
    if (tulm == "absent") return Reply::message(409, "Tulm is not on this Mac.");
    if (tulm == "closed") return Reply::message(409, "Tulm is closed. Open it to move its sidebar.");
    sidebar = position;
    return Reply::done();
}

Reply State::setScreen(const json& body) {
    if (!isFlag(body, "on")) return Reply::message(400, "Say whether screen sharing is on.");
    bool wanted = body["on"].get<bool>();
    if (wanted && !screen.available) return Reply::message(409, "This Mac can't share its screen.");
    screen.on = wanted;
    // Turning sharing off ends every viewer at once.
    if (!wanted) stopScreen();
    return Reply::done();
}

Reply State::stopScreen() {
    screen.watching.clear();
    screen.control.reset();
    return Reply::done();
}

Reply State::removePhone(const json& body) {
    if (!isText(body, "id") || body["id"].get<std::string>().empty())
        return Reply::message(400, "Say which device to remove.");
    Phone* phone = find(body["id"].get<std::string>());
    if (!phone) return Reply::refusal(404, "not_found", noSuchDevice);
    // The last owner may go too: the owner setup code brings one back.
    phones.erase(phones.begin() + (phone - phones.data()));
    return Reply::done();
}

Reply State::setRole(const json& body, TimePoint now) {
    if (!isText(body, "id") || body["id"].get<std::string>().empty())
        return Reply::message(400, "Say which device changes its role.");
    std::string role = isText(body, "role") ? body["role"].get<std::string>() : "";
    if (role != "owner" && role != "member") return Reply::message(400, "A role is \"owner\" or \"member\".");
    Phone* phone = find(body["id"].get<std::string>());
    if (!phone) return Reply::refusal(404, "not_found", noSuchDevice);
    if (!screen.watching.empty() || screen.control)
        return Reply::refusal(409, "screen_shared", "Someone is watching this Mac's screen. Stop that first.");
    if (role == "member" && phone->role == "owner") {
        bool another = std::any_of(phones.begin(), phones.end(),
                                   [&](const Phone& other) { return other.id != phone->id && other.role == "owner"; });
        if (!another) return Reply::refusal(409, "last_owner", "This is the only owner of this Mac.");
    }
    if (role == phone->role) return Reply::done();
    phone->role = role;
    phone->guest.reset();
    if (role == "owner") phone->ownerSince = Rfc3339::string(now);
    else phone->ownerSince.reset();
    return Reply::done();
}

Reply State::extendGuest(const json& body) {
    if (!isText(body, "id") || body["id"].get<std::string>().empty())
        return Reply::message(400, "Say which guest to extend.");
    auto ends = isText(body, "ends") ? Rfc3339::parse(body["ends"].get<std::string>()) : std::nullopt;
    if (!ends) return Reply::message(400, "The new end date was not understood.");
    Phone* phone = find(body["id"].get<std::string>());
    if (!phone) return Reply::refusal(404, "not_found", noSuchDevice);
    if (phone->role != "guest") return Reply::message(409, "Only a guest has an end date.");
    if (!phone->guest || !phone->guest->is_object()) phone->guest = defaultScope(*ends);
    (*phone->guest)["ends"] = Rfc3339::string(*ends);
    return Reply::done();
}

Reply State::setDiagnostics(const json& body) {
    if (!isFlag(body, "allowed")) return Reply::message(400, "Say whether reports are allowed.");
    diagnostics = body["allowed"].get<bool>();
    diagnosticsAnswered = true;
    return Reply::done();
}

Reply State::addPhone(const json& body, TimePoint now) {
    for (const char* key : {"id", "name", "role", "ownerSince"})
        if (body.contains(key) && !body[key].is_string())
            return Reply::message(400, std::string(key) + " must be text.");
    if (body.contains("guest") && !body["guest"].is_object()) return Reply::message(400, "guest must be an object.");
    Phone phone;
    phone.id = isText(body, "id") ? body["id"].get<std::string>() : "phone-" + std::to_string(nextPhone++);
    if (phone.id.empty()) return Reply::message(400, "id can't be empty.");
    if (find(phone.id)) return Reply::message(409, "A device with that id is already on this Mac.");
    if (isText(body, "name")) phone.name = body["name"].get<std::string>();
    phone.role = isText(body, "role") ? body["role"].get<std::string>() : "member";
    if (isText(body, "ownerSince")) phone.ownerSince = body["ownerSince"].get<std::string>();
    else if (phone.role == "owner") phone.ownerSince = Rfc3339::string(now);
    if (body.contains("guest")) phone.guest = body["guest"];
    else if (phone.role == "guest") phone.guest = defaultScope(now + std::chrono::hours(24 * 7));
    phones.push_back(phone);
    return Reply::json(200, json{{"id", phone.id}});
}

Reply State::addWatcher(const json& body, TimePoint now) {
    if (!isText(body, "name") || body["name"].get<std::string>().empty())
        return Reply::message(400, "A watcher needs a name.");
    if (body.contains("seconds") && (!body["seconds"].is_number() || body["seconds"].get<double>() < 0))
        return Reply::message(400, "seconds must be a number, 0 or more.");
    if (body.contains("control") && !body["control"].is_boolean())
        return Reply::message(400, "control must be true or false.");
    if (!screen.on) return Reply::message(409, "Screen sharing is off, so nobody can watch.");
    std::string who = body["name"].get<std::string>();
    std::optional<TimePoint> leaves;
    if (body.contains("seconds"))
        leaves = now + std::chrono::duration_cast<TimePoint::duration>(
                           std::chrono::duration<double>(body["seconds"].get<double>()));
    auto it = std::find_if(screen.watching.begin(), screen.watching.end(),
                           [&](const Watcher& watcher) { return watcher.name == who; });
    if (it == screen.watching.end()) screen.watching.push_back({who, leaves});
    else it->leaves = leaves;
    if (body.value("control", false)) screen.control = who;
    return Reply::done();
}

Reply State::set(const json& body) {
    for (const auto& [key, value] : body.items()) {
        bool optionalText = key == "tulm" || key == "sidebar" || key == "line" || key == "control";
        bool flag = key == "available" || key == "phoneFirst" || key == "leanStatus" || key == "helperScreen" ||
                    key == "helperInput";
        if (!optionalText && !flag) return Reply::message(400, "Nothing called \"" + key + "\" can be set.");
        if (optionalText && !value.is_string() && !value.is_null())
            return Reply::message(400, key + " must be text or null.");
        if (flag && !value.is_boolean()) return Reply::message(400, key + " must be true or false.");
    }
    auto text = [&](const char* key, std::optional<std::string>& field) {
        if (!body.contains(key)) return;
        if (body[key].is_null()) field.reset();
        else field = body[key].get<std::string>();
    };
    text("tulm", tulm);
    text("sidebar", sidebar);
    text("line", lineOverride);
    text("control", screen.control);
    screen.available = body.value("available", screen.available);
    screen.phoneFirst = body.value("phoneFirst", screen.phoneFirst);
    leanStatus = body.value("leanStatus", leanStatus);
    // What the screen helper was granted, as its status reports it.
    screen.mayCapture = body.value("helperScreen", screen.mayCapture);
    screen.mayControl = body.value("helperInput", screen.mayControl);
    return Reply::done();
}

} // namespace orvan::sim
