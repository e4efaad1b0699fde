#pragma once
// The Fallback section: the accounts automatic switching tries, in order, and the switch for it.

#include "accounts/Accounts.h"
#include "ui/Node.h"

namespace orvan::FallbackOrderSection {

inline constexpr const char* title = "Fallback";

ui::Node build(Accounts& accounts);

} // namespace orvan::FallbackOrderSection
