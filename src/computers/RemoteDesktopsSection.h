#pragma once
// The main window's section of the remote desktops: one row for each, the add sheet, and the
// question before one is removed. It reads the list once when it first appears; nothing polls.

#include "computers/Remotes.h"
#include "computers/RemotesViewState.h"
#include "ui/Node.h"

#include <functional>

namespace orvan::RemoteDesktopsSection {

inline constexpr const char* title = "Remote desktops";

ui::Node build(Remotes& remotes, RemotesViewState& state, std::function<void()> changed);

} // namespace orvan::RemoteDesktopsSection
