#include "JoinState.h"

#include <algorithm>

namespace orvan::sim {

using nlohmann::json;

JoinState& JoinState::shared() {
    static JoinState kept;
    return kept;
}

std::string JoinState::code() { return std::to_string(1000 + random() % 9000); }

PendingJoin& JoinState::ask(std::string inviteId, std::string name, std::string role, std::optional<json> guest,
                            TimePoint now) {
    static const char* digits = "0123456789abcdef";
    PendingJoin join;
    for (int i = 0; i < 16; ++i) join.id.push_back(digits[random() % 16]);
    for (int i = 0; i < 16; ++i) join.fp.push_back(digits[random() % 16]);
    join.inviteId = std::move(inviteId);
    join.name = std::move(name);
    join.role = std::move(role);
    join.guest = std::move(guest);
    join.code = code();
    join.created = now;
    pending.push_back(std::move(join));
    return pending.back();
}

PendingJoin* JoinState::find(const std::string& id) {
    auto it = std::find_if(pending.begin(), pending.end(), [&](const PendingJoin& j) { return j.id == id; });
    return it == pending.end() ? nullptr : &*it;
}

void JoinState::remove(const std::string& id) {
    std::erase_if(pending, [&](const PendingJoin& j) { return j.id == id; });
}

json JoinState::listed() const {
    json joins = json::array();
    for (const auto& j : pending) {
        json row{{"id", j.id}, {"name", j.name}, {"platform", "ios"}, {"role", j.role},
                 {"code", j.code}, {"fp", j.fp}, {"created", Rfc3339::string(j.created)}};
        if (j.guest) row["guest"] = *j.guest;
        joins.push_back(row);
    }
    return json{{"joins", joins}, {"joined", json::array()}};
}

} // namespace orvan::sim
