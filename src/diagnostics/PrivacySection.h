#pragma once
// The Privacy section of the main window: the sending switch, bound to the stored answer, and
// what it covers.

#include "foundation/UserDefaults.h"
#include "ui/Node.h"

#include <functional>
#include <string_view>

namespace orvan::PrivacySection {

ui::Node build(UserDefaults& defaults, std::string_view version, std::function<void()> changed);

} // namespace orvan::PrivacySection
