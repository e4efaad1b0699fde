#pragma once
// The words for Docker on another computer: what each state means, and what setting it up does.

#include <optional>
#include <string>

namespace orvan::HostDocker {

inline constexpr const char* startHelp =
    "Sandboxes need Docker's engine running there. This starts it with the computer's service manager, sets it to "
    "start with the computer, and lets this user use Docker. It asks for sudo's password only if sudo needs one; it "
    "is used once and not kept.";

inline constexpr const char* why =
    "Sandbox desktops on Linux run under Docker: each is a container with its own desktop and browser. Pros: light, "
    "starts in seconds, uses the computer's own kernel. Cons: containers share that kernel, so they are less walled "
    "off than the small virtual machines Apple's container tool gives a Mac, and whoever can use Docker there has "
    "root-like power on that computer. Installing uses the computer's own package manager, and asks for sudo's "
    "password only if sudo needs one; it is used once and not kept.";

// A word this program doesn't know reads as not checked yet.
std::string line(const std::optional<std::string>& docker, const std::optional<std::string>& os);

} // namespace orvan::HostDocker
