#pragma once
// The owner setup window's contents by phase, and the main window's button that opens it.

#include "accounts/AccountWords.h"
#include "phones/OwnerSetupButton.h"
#include "phones/OwnerSetupModel.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::OwnerSetupView {

ui::Node build(OwnerSetupModel& model, const AccountWords::Place& place);
// Nothing while the bridge offers no owner setup.
ui::Node button(const OwnerSetupButton& button, std::function<void()> show);

} // namespace orvan::OwnerSetupView
