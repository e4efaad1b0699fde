#include "FeedbackRoutes.h"

#include "Routes.h"

#include <cctype>
#include <deque>

namespace orvan::sim::FeedbackRoutes {

using nlohmann::json;

namespace {

constexpr const char* path = "/companion/feedback";
// The newest reports taken; older ones are let go.
constexpr std::size_t kept = 20;

// Lives with its routes, as the other families' do; the server's lock guards every call.
struct Relay {
    std::string mode = "on";
    std::deque<json> received;
    int filed = 0;
};

Relay& relay() {
    static Relay state;
    return state;
}

bool isBase64(const std::string& text) {
    if (text.empty() || text.size() % 4 != 0) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool pad = c == '=' && i + 2 >= text.size();
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '/' || pad)) return false;
    }
    return true;
}

// What the relay checks before it files a report.
std::string fault(const json& body) {
    auto text = [&](const char* key) { return body.contains(key) && body[key].is_string(); };
    if (!text("kind") || (body["kind"] != "bug" && body["kind"] != "feature" && body["kind"] != "other"))
        return "Give \"kind\" as bug, feature or other.";
    if (!text("text") || body["text"].get<std::string>().empty()) return "Give \"text\" as text.";
    if (!text("diagnostics") || !text("device")) return "Give \"diagnostics\" and \"device\" as text.";
    if (!body.contains("images") || !body["images"].is_array()) return "Give \"images\" as a list.";
    if (body["images"].size() > 3) return "A report takes at most 3 pictures.";
    for (const auto& image : body["images"]) {
        if (!image.is_object() || !image.contains("type") || !image["type"].is_string() || !image.contains("data") ||
            !image["data"].is_string() || !isBase64(image["data"].get<std::string>()))
            return "Each picture needs \"type\" and \"data\" in base64.";
    }
    return {};
}

} // namespace

bool owns(const std::string& p) { return p == path; }

Reply answer(Sim& sim, const std::string& method, const std::string& p, const std::string& text, TimePoint) {
    auto& state = relay();
    if (method == "GET" || method == "HEAD") return Reply::json(200, json{{"reports", json(state.received)}});
    if (method != "POST") return Reply::message(405, method + " is not how " + p + " is used.");
    auto body = Routes::object(text, false);
    if (!body) return Reply::message(400, "The request body was not a JSON object.");
    if (const std::string why = fault(*body); !why.empty()) return Reply::message(400, why);
    if (state.mode == "unpaired" || sim.state.phones.empty())
        return Reply::message(401, "The relay knows this Mac only once a phone is paired.");
    if (state.mode == "off") return Reply::refusal(503, "feedback_off", "The relay takes no reports now.");
    if (state.mode == "none") return Reply::refusal(503, "no_relay", "The relay has no tracker to file reports in.");
    state.received.push_back(std::move(*body));
    while (state.received.size() > kept) state.received.pop_front();
    return Reply::json(200, json{{"ok", true}, {"id", "ORV-" + std::to_string(++state.filed)}});
}

bool ownsControl(const std::string& name) { return name == "feedback"; }

Reply control(Sim&, const std::string&, const json& body) {
    if (!body.contains("relay") || !body["relay"].is_string())
        return Reply::message(400, "Give \"relay\" as on, off, none or unpaired.");
    const std::string mode = body["relay"].get<std::string>();
    if (mode != "on" && mode != "off" && mode != "none" && mode != "unpaired")
        return Reply::message(400, "Give \"relay\" as on, off, none or unpaired.");
    relay().mode = mode;
    return Reply::done();
}

} // namespace orvan::sim::FeedbackRoutes
