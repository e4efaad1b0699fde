#include "accounts/FallbackOrder.h"

#include <algorithm>
#include <unordered_set>

namespace orvan::FallbackOrder {

std::vector<std::string> clean(const std::vector<std::string>& chain, const std::vector<CompanionAccount>& accounts) {
    std::unordered_set<std::string> known;
    for (const auto& a : accounts) known.insert(a.id);
    std::unordered_set<std::string> seen;
    std::vector<std::string> out;
    for (const auto& id : chain)
        if (known.count(id) && seen.insert(id).second) out.push_back(id);
    return out;
}

std::vector<CompanionAccount> included(const std::vector<std::string>& chain,
                                       const std::vector<CompanionAccount>& accounts) {
    std::vector<CompanionAccount> out;
    for (const auto& id : clean(chain, accounts)) {
        auto row = std::find_if(accounts.begin(), accounts.end(), [&](const auto& a) { return a.id == id; });
        out.push_back(*row);
    }
    return out;
}

std::vector<CompanionAccount> excluded(const std::vector<std::string>& chain,
                                       const std::vector<CompanionAccount>& accounts) {
    std::unordered_set<std::string> in(chain.begin(), chain.end());
    std::vector<CompanionAccount> out;
    for (const auto& a : accounts)
        if (!in.count(a.id)) out.push_back(a);
    return out;
}

std::vector<std::string> moved(const std::vector<std::string>& chain, const std::set<int>& from, int to) {
    const int size = static_cast<int>(chain.size());
    std::vector<std::string> dragged;
    std::vector<std::string> rest;
    int below = 0;
    for (int i = 0; i < size; ++i) {
        if (from.count(i)) {
            dragged.push_back(chain[static_cast<std::size_t>(i)]);
            if (i < to) ++below;
        } else {
            rest.push_back(chain[static_cast<std::size_t>(i)]);
        }
    }
    int at = std::clamp(to - below, 0, static_cast<int>(rest.size()));
    rest.insert(rest.begin() + at, dragged.begin(), dragged.end());
    return rest;
}

std::vector<std::string> stepped(const std::vector<std::string>& chain, const std::string& id, int by) {
    auto found = std::find(chain.begin(), chain.end(), id);
    if (found == chain.end()) return chain;
    auto here = found - chain.begin();
    auto there = here + by;
    if (there < 0 || there >= static_cast<std::ptrdiff_t>(chain.size())) return chain;
    auto out = chain;
    std::swap(out[static_cast<std::size_t>(here)], out[static_cast<std::size_t>(there)]);
    return out;
}

std::vector<std::string> including(const std::vector<std::string>& chain, const std::string& id, bool on) {
    std::vector<std::string> out;
    for (const auto& x : chain)
        if (x != id) out.push_back(x);
    if (on) out.push_back(id);
    return out;
}

Json body(const std::vector<std::string>& chain, bool autoSwitch) {
    return Json{{"chain", chain}, {"autoSwitch", autoSwitch}};
}

} // namespace orvan::FallbackOrder
