#pragma once
// What the computers' section remembers between renders.

#include <optional>
#include <string>

namespace orvan {

struct ComputersViewState {
    // The computer whose removal waits for the owner's yes, by target.
    std::optional<std::string> removing;
    // The computer whose bridge update waits for the owner's yes, by target.
    std::optional<std::string> updating;
    // What is typed into the sudo question; emptied as it goes to the bridge.
    std::string sudoPassword;
};

} // namespace orvan
