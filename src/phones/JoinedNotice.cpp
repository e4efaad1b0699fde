#include "phones/JoinedNotice.h"

#include "foundation/Json.h"
#include "foundation/Text.h"

namespace orvan {

namespace {
struct Row {
    std::optional<std::string> name, platform, role, at;
    static std::optional<Row> decode(const Json& j) {
        Row r;
        Fields f(j);
        f.optional("name", r.name).optional("platform", r.platform).optional("role", r.role).optional("at", r.at);
        return f.result(std::move(r));
    }
};
} // namespace

std::vector<JoinedNotice> JoinedNotice::list(std::string_view data) {
    std::vector<JoinedNotice> out;
    auto parsed = json::parse(data);
    if (!parsed || !parsed->is_object()) return out;
    std::optional<Lossy<Row>> rows;
    Fields f(*parsed);
    f.optional("joined", rows);
    if (!f.ok() || !rows) return out;
    for (auto& row : rows->items) {
        std::string name = Text::trimmed(row.name.value_or(""));
        if (name.empty()) continue;
        out.push_back({std::move(name), row.platform.value_or(""), row.role.value_or(""),
                       row.at ? AccountWords::date(*row.at) : std::nullopt});
    }
    return out;
}

std::string JoinedNotice::line(TimePoint now, const AccountWords::Place& place) const {
    std::string out = name + " joined by a QR code";
    if (at) out += " at " + AccountWords::time(*at, now, place);
    out += std::string(", as a ") + (role == "guest" ? "Guest" : "Member");
    if (platform == "web") out += ", from a browser";
    return out + ".";
}

} // namespace orvan
