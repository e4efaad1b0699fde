#include "accounts/CreatedAccount.h"

namespace orvan {

std::optional<CreatedAccount> CreatedAccount::decode(const Json& j) {
    std::optional<CompanionAccount> wrapped;
    Fields(j).loose("account", wrapped);
    if (wrapped) return CreatedAccount{std::move(*wrapped)};
    if (auto bare = CompanionAccount::decode(j)) return CreatedAccount{std::move(*bare)};
    return std::nullopt;
}

} // namespace orvan
