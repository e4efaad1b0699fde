#pragma once
// The two small sheets over an open account: its key (or access key pair), and its Bedrock region
// and model.

#include "accounts/Accounts.h"
#include "accounts/AccountsViewState.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::AccountKeySheet {
ui::Node build(Accounts& accounts, AccountsViewState& state, const CompanionAccount& account,
               std::function<void()> changed);
} // namespace orvan::AccountKeySheet

namespace orvan::BedrockSettingsSheet {
void open(AccountsViewState& state, const CompanionAccount& account);
ui::Node build(Accounts& accounts, AccountsViewState& state, const CompanionAccount& account,
               std::function<void()> changed);
} // namespace orvan::BedrockSettingsSheet
