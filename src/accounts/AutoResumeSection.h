#pragma once
// The bridge's one usage-limit setting: typing "continue" into an agent once its limit resets.

#include "accounts/Accounts.h"
#include "ui/Node.h"

namespace orvan::AutoResumeSection {

inline constexpr const char* title = "Auto-resume after limits";

ui::Node build(Accounts& accounts);

} // namespace orvan::AutoResumeSection
