#pragma once
// Asked once at the start of the main window while the consent needs asking: the switch starts
// from the stored or preset value, and only Continue answers. Closing it any other way leaves the
// question for the next start.

#include "foundation/UserDefaults.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::ConsentSheet {

// `asking` and `on` are the host's view state; nothing is drawn while `asking` is false.
ui::Node build(bool& asking, bool& on, UserDefaults& defaults, std::function<void()> changed);

} // namespace orvan::ConsentSheet
