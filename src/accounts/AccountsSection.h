#pragma once
// The main window's Accounts section: every account with its readiness and plan meters, the
// "Check again" button, and the detail of the row pressed.

#include "accounts/Accounts.h"
#include "accounts/AccountRowModel.h"
#include "accounts/AccountsViewState.h"
#include "ui/Node.h"

#include <functional>
#include <optional>

namespace orvan::AccountsSection {

inline constexpr const char* title = "Accounts";

// `wordsChange`, when given, is moved earlier to the first moment a row's words change with the time alone.
ui::Node build(Accounts& accounts, AccountsViewState& state, TimePoint now, std::function<void()> changed,
               std::optional<TimePoint>* wordsChange = nullptr);

// The words of one row, shared by the section and the detail sheet.
ui::Nodes rowWords(const Accounts& accounts, const AccountRowModel& row, TimePoint now);

} // namespace orvan::AccountsSection
