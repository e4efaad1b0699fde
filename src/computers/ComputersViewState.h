#pragma once
// What the computers' section remembers between renders.

#include "foundation/Observable.h"

#include <memory>
#include <optional>
#include <string>

namespace orvan {

class AddComputerSheet;
class HostSetupSheet;
class HostSignInSheet;

struct ComputersViewState {
    // The computer whose removal waits for the owner's yes, by target.
    std::optional<std::string> removing;
    // The computer whose bridge update waits for the owner's yes, by target.
    std::optional<std::string> updating;
    // What is typed into the sudo question; emptied as it goes to the bridge.
    std::string sudoPassword;
    // The open add sheet, and the open agents or accounts sheet of one computer.
    std::shared_ptr<AddComputerSheet> adding;
    std::shared_ptr<HostSetupSheet> settingUp;
    // The open sign-in sheet of one computer, and the watch that draws it again as it changes.
    std::shared_ptr<HostSignInSheet> signingIn;
    std::shared_ptr<Observable::Subscription> signingInWatch;
};

} // namespace orvan
