#pragma once
// What the user sees of the companion: the window and tray, or the text view.

#include <string>

namespace orvan::app {

// The answer to one typed command: its lines, each answer line starting "> ".
struct CommandAnswer {
    bool accepted = false;
    std::string text;
};

class FrontEnd {
public:
    virtual ~FrontEnd() = default;
    // Everything is in place and the supervisor is about to start.
    virtual void launched(bool atLogin) = 0;
    // A second launch asked this one to come forward.
    virtual void bringForward() {}
    // A command handed over by `--send`; a front end that takes none refuses it.
    virtual CommandAnswer command(const std::string&) { return {false, "> This window takes no typed commands.\n"}; }
};

} // namespace orvan::app
