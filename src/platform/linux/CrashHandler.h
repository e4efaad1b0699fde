#pragma once
// Catches the program's own crashes: a handler on an alternate stack for the fatal signals and a
// terminate handler for exceptions nobody caught. The handler writes one fixed-size record with
// async-signal-safe calls only, then lets the process die of its own signal.

#include "foundation/Carryover.h"

#include <filesystem>
#include <string>

namespace orvan::CrashHandler {

// Installs the handlers for the calling thread's process; the record goes to `pendingFile`, whose
// folder must exist. A second call only changes where the record goes. False when the file's
// path is too long to keep.
bool install(const std::filesystem::path& pendingFile, const std::string& version, const std::string& build);

// The program's own: the record goes beside the crash queue, in the data folder.
bool installForProgram(const Environment& environment, const std::string& version, const std::string& build);

// Whether the handlers are ours at the moment (another may have replaced them since).
bool installed();

} // namespace orvan::CrashHandler
