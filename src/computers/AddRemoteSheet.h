#pragma once
// The sheet that adds a remote desktop: the form, a test that reaches the desktop and signs in
// without keeping anything, trust in an RDP server's certificate on first use, then the add.

#include "computers/Remotes.h"
#include "computers/RemotesViewState.h"
#include "ui/Node.h"

#include <functional>
#include <string>

namespace orvan::AddRemoteSheet {

// The panel of a good test that needs no more trust.
std::string reached(const RemoteForm& form, const RemoteFound& found);

// Opens the sheet on an empty form.
void open(Remotes& remotes, RemotesViewState& state);
ui::Node build(Remotes& remotes, RemotesViewState& state, std::function<void()> changed);

} // namespace orvan::AddRemoteSheet
