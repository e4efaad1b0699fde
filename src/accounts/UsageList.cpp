#include "accounts/UsageList.h"

#include <unordered_set>

namespace orvan {

namespace {
std::vector<LoginUsage> firstOfEachId(const Json& j, const char* key) {
    std::optional<Lossy<LoginUsage>> list;
    Fields(j).loose(key, list);
    std::vector<LoginUsage> out;
    if (!list) return out;
    std::unordered_set<std::string> seen;
    for (auto& row : list->items)
        if (seen.insert(row.id).second) out.push_back(std::move(row));
    return out;
}
} // namespace

const LoginUsage& UsageList::usage(const std::string& id) const {
    static const LoginUsage empty{};
    for (const auto& row : accounts)
        if (row.id == id) return row;
    for (const auto& row : defaults)
        if (row.id == id) return row;
    return empty;
}

std::string UsageList::path(bool fresh) {
    return fresh ? "/companion/accounts/usage?fresh=1" : "/companion/accounts/usage";
}

std::optional<UsageList> UsageList::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    return UsageList{firstOfEachId(j, "accounts"), firstOfEachId(j, "defaults")};
}

} // namespace orvan
