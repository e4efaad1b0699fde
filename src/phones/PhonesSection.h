#pragma once
// The Phones section of the main window, with its confirmations and the invite sheet.

#include "foundation/Time.h"
#include "ui/Node.h"

#include <optional>

namespace orvan {

class Bridge;
struct DeskState;
struct DeskContext;

namespace PhonesSection {
ui::Node build(Bridge& bridge, DeskState& state, TimePoint now, const DeskContext& context);
} // namespace PhonesSection

} // namespace orvan
