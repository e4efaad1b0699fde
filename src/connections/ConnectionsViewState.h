#pragma once
// What the Connections section keeps of its own: the typed hostname and token, and the confirmation.

#include <string>

namespace orvan {

struct ConnectionsViewState {
    std::string hostname;
    // The owner has typed in the hostname field; until then it follows the bridge.
    bool edited = false;
    // Held only until the save that sends it.
    std::string token;
    bool removing = false;
};

} // namespace orvan
