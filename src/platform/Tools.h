#pragma once
// Short-lived tools run by path, each to its end or its time-out, with exactly the environment the
// caller gives (nothing is inherited). Which tool, which environment and how long are the caller's.

#include "foundation/Async.h"
#include "foundation/Carryover.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct ToolCall {
    std::filesystem::path executable;
    std::vector<std::string> arguments;
    Environment environment;
    Duration timeout = std::chrono::seconds(30);
    bool capture = false; // standard output to the result, else to the null device
    bool errors = false;  // with `capture`, standard error joins it; else to the null device
    std::optional<std::filesystem::path> directory;
};

struct CommandResult {
    int code = 1;
    std::string output;
};

class Tools {
public:
    virtual ~Tools() = default;
    // A launch failure or a time-out (the tool is then stopped) gives code 1 with no output.
    virtual Task<CommandResult> run(ToolCall call) = 0;
};

} // namespace orvan
