#include "phones/JoinRequest.h"

namespace orvan {

std::string JoinRequest::digits(std::string_view text) {
    // Blanks only: a code that came with a line break was not typed as a code.
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    if (text.empty() || text.size() > 4) return {};
    for (char c : text)
        if (c < '0' || c > '9') return {};
    return std::string(4 - text.size(), '0') + std::string(text);
}

std::string JoinRequest::keyPrint(std::string_view text) {
    if (text.size() != 16) return {};
    for (char c : text)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return {};
    return std::string(text);
}

std::optional<JoinRequest> JoinRequest::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    JoinRequest r;
    Fields f(j);
    f.loose("id", r.id, "").loose("name", r.name, "").loose("platform", r.platform, "").loose("role", r.role, "");
    f.loose("created", r.created, "");
    if (r.id.empty()) return std::nullopt; // a join with no id
    if (auto guest = j.find("guest"); guest != j.end() && guest->is_object()) r.guest = GuestScope::decode(*guest);
    if (auto code = j.find("code"); code != j.end()) {
        if (code->is_string()) r.code = digits(code->get_ref<const std::string&>());
        else if (code->is_number_integer()) r.code = digits(code->dump());
    }
    std::string fp;
    f.loose("fp", fp, "");
    r.fp = keyPrint(fp);
    return r;
}

std::optional<std::vector<JoinRequest>> JoinRequest::list(std::string_view data) {
    auto parsed = json::parse(data);
    if (!parsed || !parsed->is_object()) return std::nullopt;
    std::optional<Lossy<JoinRequest>> joins;
    Fields f(*parsed);
    f.optional("joins", joins);
    if (!f.ok()) return std::nullopt;
    return joins ? std::move(joins->items) : std::vector<JoinRequest>{};
}

} // namespace orvan
