#include "DiagnosticsRoutes.h"

#include "Routes.h"

#include <deque>

namespace orvan::sim::DiagnosticsRoutes {

using nlohmann::json;

namespace {
constexpr const char* reportPath = "/companion/diagnostics/report";
// The newest reports taken; older ones are let go.
constexpr std::size_t kept = 200;

// Lives with its routes, as the other families' do; the server's lock guards every call.
std::deque<json>& received() {
    static std::deque<json> reports;
    return reports;
}

// What a bridge would check before it forwards a report: the record's own shape, not its contents.
bool looksLikeReport(const json& body) {
    auto text = [&](const char* key) { return body.contains(key) && body[key].is_string(); };
    auto whole = [&](const char* key) { return body.contains(key) && body[key].is_number_integer(); };
    return whole("v") && body["v"] == 1 && text("source") && text("kind") && text("signature") && text("version") &&
           body.contains("frames") && body["frames"].is_array() && whole("count") && whole("at");
}
} // namespace

bool owns(const std::string& path) { return path == reportPath; }

Reply answer(Sim&, const std::string& method, const std::string& path, const std::string& body, TimePoint) {
    if (method == "GET" || method == "HEAD") return Reply::json(200, json{{"reports", json(received())}});
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto parsed = Routes::object(body, false);
    if (!parsed) return Reply::message(400, "The request body was not a JSON object.");
    if (!looksLikeReport(*parsed)) return Reply::message(400, "That is not a crash report.");
    received().push_back(std::move(*parsed));
    while (received().size() > kept) received().pop_front();
    return Reply::done();
}

} // namespace orvan::sim::DiagnosticsRoutes
