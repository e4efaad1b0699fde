#pragma once
// One account's detail, opened from its row: its words, its meters, and the changes to it.

#include "accounts/Accounts.h"
#include "accounts/AccountsViewState.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::AccountDetailSheet {

// The sheet while a row is open; nothing otherwise.
ui::Node build(Accounts& accounts, AccountsViewState& state, TimePoint now, std::function<void()> changed);

} // namespace orvan::AccountDetailSheet
