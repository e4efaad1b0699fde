#pragma once
// A terminal window for the owner: opens one and runs exactly one shell line in it, for a sign-in
// that a command-line agent does itself. The words for what went wrong stay with the caller.

#include "foundation/Async.h"

#include <string>

namespace orvan {

struct TerminalRun {
    enum class Outcome {
        opened,      // a terminal started with the line
        notLaunched, // no terminal program could be started
        failed,      // the terminal started but gave up, with a code other than 0
        noDisplay,   // nothing can show a window in this session (a text view over SSH)
    };
    Outcome outcome = Outcome::opened;
    // What the terminal wrote to its error output, bounded; for telling a refusal from a failure.
    std::string errors;
};

class Terminal {
public:
    virtual ~Terminal() = default;
    virtual Task<TerminalRun> run(std::string line) = 0;
};

} // namespace orvan
