#pragma once
// This computer's accounts to copy to another one. A Claude login without its token can't go
// yet: its row offers to make one instead of a tick.

#include "accounts/Accounts.h"
#include "ui/Node.h"

#include <functional>
#include <set>
#include <string>

namespace orvan::AccountPicker {

ui::Node build(Accounts& accounts, const std::set<std::string>& chosen, const std::string& computer,
               std::function<void(const std::string&, bool)> tick);

} // namespace orvan::AccountPicker
