#pragma once
// The Folders section: where the phone may start a direct thread.

#include "access/AccessViewState.h"
#include "access/Folders.h"
#include "platform/FilePicker.h"
#include "ui/Node.h"

#include <filesystem>
#include <functional>

namespace orvan::FoldersSection {

// Without a chooser (`picker` absent or unable), the section takes a typed path.
ui::Node build(Folders& folders, FilePicker* picker, AccessViewState& state, const std::filesystem::path& home,
               std::function<void()> changed);

} // namespace orvan::FoldersSection
