#pragma once
// What this computer can share with a guest: its projects and sessions as pickable rows.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct ScopeItem {
    std::string id;
    std::string title;
    std::string detail;
    bool operator==(const ScopeItem&) const = default;
};

struct ScopeNames {
    std::map<std::string, std::string> projects;
    std::map<std::string, std::string> sessions;
};

struct ScopeList {
    std::vector<ScopeItem> projects;
    std::vector<ScopeItem> sessions;
    bool operator==(const ScopeList&) const = default;

    bool empty() const { return projects.empty() && sessions.empty(); }
    // Nothing for a body that doesn't decode; a missing list is an empty one.
    static std::optional<ScopeList> read(std::string_view body);
    ScopeNames names() const;
};

} // namespace orvan
