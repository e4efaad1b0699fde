#pragma once
// The Updates section of the main window, and the alert that asks about a new release.

#include "bridge/Bridge.h"
#include "ui/Node.h"

namespace orvan::UpdatesSection {

// Shown when the bridge was set up with the update ports.
ui::Node build(Bridge& bridge);
// Shown while the bridge asks; nothing otherwise.
ui::Node alert(Bridge& bridge);

} // namespace orvan::UpdatesSection
