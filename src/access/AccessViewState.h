#pragma once
// The Folders and Files sections' own state, kept by whoever hosts the main window.

#include "access/ThreadFolder.h"

#include <optional>
#include <string>

namespace orvan {

struct AccessViewState {
    // The folder whose removal is being asked about.
    std::optional<ThreadFolder> removing;
    // A folder typed by path, where no chooser can be shown.
    std::string typedFolder;
    // "Full Disk Access…" asks first.
    bool confirmingFullDisk = false;
};

} // namespace orvan
