#pragma once
#include "bridge/Bridge.h"
#include "ui/Node.h"

namespace orvan::EnvironmentsSection {
// What runs threads on this computer: the program itself, the sibling desktop program, and the
// side of that program's sidebar while it can be moved.
ui::Node build(Bridge& bridge);
} // namespace orvan::EnvironmentsSection
