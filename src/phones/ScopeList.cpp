#include "phones/ScopeList.h"

#include "foundation/Json.h"
#include "foundation/Text.h"

namespace orvan {

namespace {

constexpr std::size_t goalTitleLength = 60;

struct ScopeRow {
    std::string id, name, goal, projectName;
    static std::optional<ScopeRow> decode(const Json& j) {
        if (!j.is_object()) return std::nullopt;
        ScopeRow r;
        Fields f(j);
        f.loose("id", r.id, "").loose("name", r.name, "").loose("goal", r.goal, "").loose("projectName", r.projectName, "");
        if (r.id.empty()) return std::nullopt; // a row with no id
        return r;
    }
};

struct ScopeAnswer {
    std::optional<Lossy<ScopeRow>> projects;
    std::optional<Lossy<ScopeRow>> sessions;
    static std::optional<ScopeAnswer> decode(const Json& j) {
        ScopeAnswer a;
        Fields f(j);
        f.optional("projects", a.projects).optional("sessions", a.sessions);
        return f.result(std::move(a));
    }
};

// A session without a name goes by the first line of its goal that says anything.
std::string goalTitle(const std::string& goal) {
    std::size_t start = 0;
    while (start <= goal.size()) {
        std::size_t end = goal.find('\n', start);
        if (end == std::string::npos) end = goal.size();
        std::string line = goal.substr(start, end - start);
        if (!line.empty()) return Text::prefixCharacters(Text::trimmed(line), goalTitleLength);
        start = end + 1;
    }
    return {};
}

} // namespace

std::optional<ScopeList> ScopeList::read(std::string_view body) {
    auto answer = decodeJson<ScopeAnswer>(body);
    if (!answer) return std::nullopt;
    ScopeList list;
    if (answer->projects)
        for (const auto& row : answer->projects->items) {
            std::string title = Text::trimmed(row.name);
            list.projects.push_back({row.id, title.empty() ? std::string("Unnamed project") : title, ""});
        }
    if (answer->sessions)
        for (const auto& row : answer->sessions->items) {
            std::string title = Text::trimmed(row.name);
            if (title.empty()) title = goalTitle(row.goal);
            if (title.empty()) title = "Untitled session";
            list.sessions.push_back({row.id, title, Text::trimmed(row.projectName)});
        }
    return list;
}

ScopeNames ScopeList::names() const {
    ScopeNames names;
    for (const auto& p : projects) names.projects.emplace(p.id, p.title);
    for (const auto& s : sessions) names.sessions.emplace(s.id, s.title);
    return names;
}

} // namespace orvan
