#include "phones/JoinWords.h"

#include "foundation/Text.h"
#include "phones/GuestWords.h"
#include "phones/InviteWords.h"

namespace orvan {

std::string JoinWords::who(const JoinRequest& join) {
    std::string name = Text::trimmed(join.name);
    return name.empty() ? "Someone" : name;
}

std::string JoinWords::title(const JoinRequest& join, const std::string& mac) {
    return who(join) + " wants to join " + mac + " as a " + (join.guestRole() ? "Guest" : "Member") + ". Code " +
           join.code + ".";
}

std::string JoinWords::check(const JoinRequest& join) { return "Approve only if " + who(join) + " reads you this code."; }

std::string JoinWords::platform(const JoinRequest& join) {
    if (join.platform == "ios") return "On an iPhone";
    if (join.platform == "web") return "In a browser";
    return {};
}

std::string JoinWords::code(const JoinRequest& join) { return "Code " + join.code; }

std::string JoinWords::seen(const GuestScope& scope, const ScopeNames& names) {
    std::vector<std::string> items;
    int projects = 0, sessions = 0;
    for (const auto& id : scope.projects) {
        if (auto it = names.projects.find(id); it != names.projects.end()) items.push_back(it->second);
        else ++projects;
    }
    for (const auto& id : scope.sessions) {
        if (auto it = names.sessions.find(id); it != names.sessions.end()) items.push_back(it->second);
        else ++sessions;
    }
    const bool named = !items.empty();
    auto count = [named](int n, const char* noun) {
        return std::to_string(n) + (named ? " more " : " ") + noun + (n == 1 ? "" : "s");
    };
    if (projects > 0) items.push_back(count(projects, "project"));
    if (sessions > 0) items.push_back(count(sessions, "session"));
    if (items.empty()) return "Sees no project or session.";
    if (items.size() == 1) return "Sees only " + items.front() + ".";
    std::string out = "Sees only ";
    for (std::size_t i = 0; i + 1 < items.size(); ++i) out += (i ? ", " : "") + items[i];
    return out + " and " + items.back() + ".";
}

std::vector<std::string> JoinWords::sees(const JoinRequest& join, const ScopeNames& names, TimePoint now,
                                         const AccountWords::Place& place) {
    if (!join.guestRole()) return {InviteWords::member};
    const GuestScope scope = join.guest.value_or(GuestScope{});
    std::vector<std::string> lines{seen(scope, names)};
    if (scope.mode == "reply") {
        lines.push_back(InviteWords::canReply);
        lines.push_back(InviteWords::replyWarning);
    } else {
        lines.push_back(InviteWords::watches);
    }
    lines.push_back("Never answers permission prompts.");
    if (scope.ends) {
        std::string w = GuestWords::ends(*scope.ends, now);
        if (w == GuestWords::ended) {
            lines.push_back("Its end date has passed.");
        } else {
            if (!w.empty() && w[0] >= 'a' && w[0] <= 'z') w[0] = static_cast<char>(w[0] - 'a' + 'A');
            lines.push_back(w + ", " + AccountWords::time(*scope.ends, now, place) + ".");
        }
    }
    return lines;
}

std::string JoinWords::menu(const std::vector<JoinRequest>& joins) {
    if (joins.size() == 1) return who(joins.front()) + " wants to join\u2026";
    return std::to_string(joins.size()) + " want to join\u2026";
}

std::string JoinWords::waiting(const std::vector<JoinRequest>& joins) {
    if (joins.size() == 1) return who(joins.front()) + " is waiting to join.";
    return std::to_string(joins.size()) + " people are waiting to join.";
}

} // namespace orvan
