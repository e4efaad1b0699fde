#include "phones/MadeInvite.h"

namespace orvan {

namespace {
std::optional<TimePoint> looseDate(const std::optional<std::string>& text) {
    return text ? AccountWords::date(*text) : std::nullopt;
}
} // namespace

std::optional<MadeInvite> MadeInvite::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    MadeInvite m;
    std::optional<std::string> expires;
    Fields f(j);
    f.loose("id", m.id, "").loose("link", m.link, "").loose("kind", m.kind, "").loose("expires", expires);
    if (m.id.empty()) return std::nullopt; // an invite with no id
    m.expires = looseDate(expires);
    return m;
}

std::optional<MadeInvite> MadeInvite::read(std::string_view body) { return decodeJson<MadeInvite>(body); }

std::optional<LiveInvite> LiveInvite::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    LiveInvite l;
    std::optional<std::string> expires;
    Fields f(j);
    f.loose("id", l.id, "").loose("name", l.name, "").loose("role", l.role, "").loose("kind", l.kind, "");
    f.loose("expires", expires).loose("guest", l.guest);
    if (l.id.empty()) return std::nullopt; // an invite with no id
    l.expires = looseDate(expires);
    return l;
}

namespace {
struct InviteList {
    std::optional<Lossy<LiveInvite>> invites;
    static std::optional<InviteList> decode(const Json& j) {
        InviteList list;
        Fields f(j);
        f.optional("invites", list.invites);
        return f.result(std::move(list));
    }
};
} // namespace

std::optional<std::vector<LiveInvite>> LiveInvite::list(std::string_view body) {
    auto list = decodeJson<InviteList>(body);
    if (!list) return std::nullopt;
    if (!list->invites) return std::vector<LiveInvite>{};
    return std::move(list->invites->items);
}

} // namespace orvan
