#pragma once
// The lines of the accounts list, made from the rows and the usage read.

#include "accounts/AccountRowModel.h"
#include "accounts/UsageList.h"

#include <optional>
#include <vector>

namespace orvan::AccountsListing {

// The accounts in list order with their use; then usage rows that no account has, in their order.
std::vector<AccountRowModel> rows(const std::vector<CompanionAccount>& accounts, const std::optional<UsageList>& usage);

} // namespace orvan::AccountsListing
