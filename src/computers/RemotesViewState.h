#pragma once
// What the remote desktops' section remembers between renders.

#include "computers/RemoteForm.h"

#include <optional>
#include <string>

namespace orvan {

struct RemotesViewState {
    // The add sheet stands, with its form.
    bool adding = false;
    RemoteForm form;
    // The desktop whose removal waits for the owner's yes, by id.
    std::optional<std::string> removing;
};

} // namespace orvan
