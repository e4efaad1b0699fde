#pragma once
// The main window's section of the other computers: a card for each, with its line, its bridge,
// its sandboxes and what can be done there, and the sudo question of a Docker install.

#include "computers/ComputersViewState.h"
#include "computers/Hosts.h"
#include "ui/Node.h"

#include <functional>
#include <string>

namespace orvan {
class Accounts;
class FilePicker;
class Desktop;
class Clipboard;
} // namespace orvan

namespace orvan::ComputersSection {

inline constexpr const char* title = "Other computers";

// What the add and setup sheets need beyond the computers: this computer's accounts, a file chooser
// where one can be shown, and the user name a new computer's form starts with.
struct ComputersServices {
    Accounts* accounts = nullptr;
    FilePicker* files = nullptr;
    std::string userName;
    // Where a sign-in's page opens and its code is copied; without them the sheet shows both.
    Desktop* desktop = nullptr;
    Clipboard* clipboard = nullptr;
};

ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed,
               const ComputersServices& services = {});

} // namespace orvan::ComputersSection
