#pragma once
// One line of the accounts list on screen: an account with its use, or a default login of this
// computer that has plan meters but no account.

#include "accounts/CompanionAccount.h"
#include "accounts/LoginUsage.h"

#include <optional>
#include <string>

namespace orvan {

struct AccountRowModel {
    std::string id;
    std::string provider;
    std::string kind;
    std::optional<CompanionAccount> account;
    LoginUsage usage;

    bool operator==(const AccountRowModel&) const = default;
};

} // namespace orvan
