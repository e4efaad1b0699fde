#pragma once
// The fallback order as list operations: what the section shows and what a drag, a step or a
// switch makes of the chain. Pure, so every change the owner can make is a value to test.

#include "accounts/CompanionAccount.h"
#include "foundation/Json.h"

#include <set>
#include <string>
#include <vector>

namespace orvan::FallbackOrder {

inline constexpr const char* footer =
    "Automatic switching tries these accounts in order, from the top, when a usage limit stops a thread. Drag them "
    "into order. Your iPhone shows the same order.";

// Ids that no account has, and later repeats, are left out; the order stands.
std::vector<std::string> clean(const std::vector<std::string>& chain, const std::vector<CompanionAccount>& accounts);
std::vector<CompanionAccount> included(const std::vector<std::string>& chain,
                                       const std::vector<CompanionAccount>& accounts);
std::vector<CompanionAccount> excluded(const std::vector<std::string>& chain,
                                       const std::vector<CompanionAccount>& accounts);
// The positions in `from` (outside ones ignored) go, in their old order, to `to`, counted in the old list.
std::vector<std::string> moved(const std::vector<std::string>& chain, const std::set<int>& from, int to);
// `id` swapped with its neighbour `by` (-1 or 1) places away; unchanged when there is none.
std::vector<std::string> stepped(const std::vector<std::string>& chain, const std::string& id, int by);
std::vector<std::string> including(const std::vector<std::string>& chain, const std::string& id, bool on);
Json body(const std::vector<std::string>& chain, bool autoSwitch);

} // namespace orvan::FallbackOrder
