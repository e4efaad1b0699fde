#pragma once
// The Remote desktop section of the main window: the switch, what sharing means now, the grants
// it needs with what to do about each, and who is watching.

#include "bridge/Bridge.h"
#include "ui/Node.h"

#include <functional>
#include <string>


namespace orvan::ScreenSection {

// `copy` puts text on the clipboard; without one the Copy button is off.
ui::Node build(Bridge& bridge, const std::function<void(const std::string&)>& copy);

} // namespace orvan::ScreenSection
