#include "accounts/AccountsListing.h"

#include <unordered_map>
#include <unordered_set>

namespace orvan::AccountsListing {

std::vector<AccountRowModel> rows(const std::vector<CompanionAccount>& accounts, const std::optional<UsageList>& usage) {
    std::vector<AccountRowModel> out;
    out.reserve(accounts.size());
    // Indexed once: a list of a thousand accounts must not look each one up row by row.
    std::unordered_map<std::string, const LoginUsage*> byId;
    if (usage) {
        for (const auto& u : usage->defaults) byId[u.id] = &u;
        for (const auto& u : usage->accounts) byId[u.id] = &u; // `accounts` wins over `defaults`
    }
    std::unordered_set<std::string> ids;
    for (const auto& account : accounts) {
        ids.insert(account.id);
        auto found = byId.find(account.id);
        out.push_back({account.id, account.provider, account.kind, account,
                       found == byId.end() ? LoginUsage{} : *found->second});
    }
    if (!usage) return out;
    for (const auto* list : {&usage->accounts, &usage->defaults}) {
        for (const auto& u : *list) {
            if (!ids.insert(u.id).second) continue;
            out.push_back({u.id, u.provider, u.kind, std::nullopt, u});
        }
    }
    return out;
}

} // namespace orvan::AccountsListing
