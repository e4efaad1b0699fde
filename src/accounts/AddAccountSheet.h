#pragma once
// The sheet that adds an account: the agent, one of the ways, that way's fields; then, for a new
// login, the offer to sign in at once.

#include "accounts/Accounts.h"
#include "accounts/AccountsViewState.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::AddAccountSheet {

// Opens the sheet, empty or preset to adopt one login.
void open(AccountsViewState& state, const Accounts& accounts, std::optional<FoundLogin> preset = std::nullopt);
// The sheet while it is open; nothing otherwise.
ui::Node build(Accounts& accounts, AccountsViewState& state, std::function<void()> changed);

} // namespace orvan::AddAccountSheet
