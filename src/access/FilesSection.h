#pragma once
// The Files section: whether files from the phone can go into the owner's usual folders.

#include "access/AccessViewState.h"
#include "access/FilesAccessModel.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::FilesSection {

ui::Node build(FilesAccessModel& model, AccessViewState& state, std::function<void()> changed);

} // namespace orvan::FilesSection
