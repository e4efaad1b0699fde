#include "RemoteState.h"

#include <algorithm>
#include <sstream>

namespace orvan::sim {

using nlohmann::json;

namespace {

std::string text(const json& body, const char* key) {
    return body.contains(key) && body[key].is_string() ? body[key].get<std::string>() : std::string();
}

bool endsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

json failed(const std::string& error, const std::string& message) {
    return json{{"ok", false}, {"error", error}, {"message", message}};
}

} // namespace

RemoteState RemoteState::seeded() {
    RemoteState s;
    s.remotes.push_back(SimRemote{"r-1", "Living room Mac", "vnc", "mac-mini.local", 5900, "", true, ""});
    return s;
}

std::string RemoteState::certificateOf(const std::string& host) {
    std::uint64_t h = 14695981039346656037ull;
    for (unsigned char c : host) h = (h ^ c) * 1099511628211ull;
    std::ostringstream out;
    out << std::hex;
    for (int i = 0; i < 8; ++i) out << (i ? ":" : "") << ((h >> (i * 8)) & 0xff);
    return out.str();
}

json RemoteState::list() const {
    json rows = json::array();
    for (const auto& r : remotes) {
        json row{{"id", r.id}, {"name", r.name}, {"protocol", r.protocol}, {"host", r.host}, {"port", r.port},
                 {"secret", r.secret}};
        if (!r.user.empty()) row["user"] = r.user;
        if (!r.fingerprint.empty()) row["fingerprint"] = r.fingerprint;
        rows.push_back(row);
    }
    return json{{"remotes", rows}};
}

json RemoteState::reach(const json& body, std::optional<Reply>& refusal) const {
    const std::string protocol = text(body, "protocol");
    const std::string host = text(body, "host");
    if (protocol != "vnc" && protocol != "rdp") {
        refusal = Reply::message(400, "The protocol is vnc or rdp.");
        return {};
    }
    if (host.empty() || !body.contains("port") || !body["port"].is_number_integer() || body["port"].get<int>() <= 0 ||
        body["port"].get<int>() > 65535) {
        refusal = Reply::message(400, "Give the desktop's host and a port from 1 to 65535.");
        return {};
    }
    const int port = body["port"];
    const std::string given = text(body, "password");
    if (endsWith(host, ".invalid"))
        return failed("unreachable", "Nothing answered at " + host + ":" + std::to_string(port) + ".");
    if (protocol == "vnc") {
        if (!given.empty() && given.substr(0, 8) != std::string(password).substr(0, 8))
            return failed("auth", "The VNC password was not accepted.");
        const std::string name = host.substr(0, host.find('.'));
        return json{{"ok", true}, {"name", name}, {"w", 1920}, {"h", 1080}, {"security", given.empty() ? "none" : "vnc"}};
    }
    if (text(body, "user").empty()) {
        refusal = Reply::message(400, "RDP needs the user to sign in as.");
        return {};
    }
    const std::string certificate = certificateOf(host);
    const std::string trusted = text(body, "fingerprint");
    if (trusted.empty()) return json{{"ok", true}, {"confirm", true}, {"fingerprint", certificate}};
    if (trusted != certificate)
        return failed("certificate", "The server's certificate is not the one you trusted.");
    if (given != password) return failed("auth", "The RDP server refused that user and password.");
    return json{{"ok", true}, {"name", host.substr(0, host.find('.'))}, {"w", 2560}, {"h", 1440}, {"security", "nla"},
                {"fingerprint", certificate}};
}

Reply RemoteState::test(const json& body) {
    std::optional<Reply> refusal;
    json found = reach(body, refusal);
    if (refusal) return *refusal;
    Reply reply = Reply::json(200, found);
    // The bridge answers only when it has reached the desktop and signed in, or given up.
    reply.delaySeconds = testSeconds;
    return reply;
}

Reply RemoteState::add(const json& body) {
    std::optional<Reply> refusal;
    json found = reach(body, refusal);
    if (refusal) return *refusal;
    if (!found.value("ok", false)) return Reply::message(400, found.value("message", "It was not added."));
    if (found.value("confirm", false)) return Reply::message(409, "Trust the server's certificate first.");
    SimRemote r;
    r.id = "r-" + std::to_string(nextId++);
    r.protocol = text(body, "protocol");
    r.host = text(body, "host");
    r.port = body["port"];
    r.name = text(body, "name").empty() ? r.host : text(body, "name");
    if (r.protocol == "rdp") r.user = text(body, "user");
    r.secret = !text(body, "password").empty();
    r.fingerprint = text(body, "fingerprint");
    remotes.push_back(r);
    return Reply::json(200, json{{"id", r.id}});
}

Reply RemoteState::remove(const json& body) {
    const std::string id = text(body, "id");
    auto it = std::find_if(remotes.begin(), remotes.end(), [&](const auto& r) { return r.id == id; });
    if (it == remotes.end()) return Reply::message(404, "No remote desktop " + id + " is kept here.");
    remotes.erase(it);
    return Reply::done();
}

} // namespace orvan::sim
