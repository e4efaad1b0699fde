#pragma once
// Reopening the program so that grants given in this launch take effect: a small shell script,
// started apart from this process, waits for this process and for the bridge it started to be
// gone (so the new copy finds the port free), then starts the program again.

#include "platform/Processes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan::Relaunch {

inline constexpr const char* shell = "/bin/bash";

// The script's lines; the program reopens with no terminal to read from.
const std::vector<std::string>& script();

// The variables of this process that the new copy needs to find its desktop session and its
// folders again; nothing else of this process's environment is handed on.
const std::vector<std::string>& session();

// What is started: the shell with the script, the program's path, this process's id and the
// bridge's, in an environment of HOME, USER, a fixed PATH and the session's variables.
ChildSpec plan(const std::filesystem::path& app, int pid, std::optional<int> bridge, const Environment& environment);

// Answers whether the script started.
bool begin(Processes& processes, const std::filesystem::path& app, int pid, std::optional<int> bridge,
           const Environment& environment);

} // namespace orvan::Relaunch
