#pragma once
// The answer to adding an account: the new row under "account", or, from older bridges, bare.

#include "accounts/CompanionAccount.h"

namespace orvan {

struct CreatedAccount {
    CompanionAccount account;

    static std::optional<CreatedAccount> decode(const Json& j);
};

} // namespace orvan
