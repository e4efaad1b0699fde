#pragma once
#include "foundation/Carryover.h"
#include "platform/Terminal.h"

#include <string>
#include <vector>

namespace orvan {

// Opens the owner's terminal emulator on one shell line: the one `$TERMINAL` names, else the
// system's `x-terminal-emulator`, else the first known terminal on the PATH. The line is handed to
// `/bin/sh -c` as one argument, so no second shell reads it again.
class LinuxTerminal final : public Terminal {
public:
    explicit LinuxTerminal(Environment environment) : environment_(std::move(environment)) {}
    Task<TerminalRun> run(std::string line) override;

    struct Candidate {
        std::string program;
        std::vector<std::string> arguments; // the line's /bin/sh -c goes after these
    };
    // In the order they are tried.
    std::vector<Candidate> candidates() const;
    // A session that can show a window: X11 or Wayland.
    bool hasDisplay() const;

private:
    Environment environment_;
};

} // namespace orvan
