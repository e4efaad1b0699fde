#pragma once
#include <string>

namespace orvan::RemoteWords {

inline const std::string reach = "This Mac has to stay awake. Your iPhone finds it on this Wi-Fi and away from it, "
                                 "with no address to type and nothing to sign in to.";

inline std::string help(bool on) {
    return on ? "Your approved phones can reach this Mac from anywhere. Click to turn that off; Wi-Fi still works."
              : "Click to let your approved phones reach this Mac from anywhere, through the relay.";
}

} // namespace orvan::RemoteWords
