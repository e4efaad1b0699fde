#pragma once
// The Sandbox section's own words: a row's state, the running install, the status line and the
// desktop mode block.

#include "sandboxes/CompanionSandbox.h"
#include "sandboxes/RuntimeInstall.h"

#include <map>
#include <optional>
#include <string>

namespace orvan::SandboxWords {

// "running" reads "Running"; a word this program does not know stands as it came.
std::string state(const std::string& word);
// "Session 1a2b3c4d" and its words joined with " · ".
std::string title(const CompanionSandbox& sandbox);
std::string detail(const CompanionSandbox& sandbox);
std::string stopHelp(bool keep);

// The name of the choice being installed: Docker Desktop, else the container tool.
std::string installName(const std::string& runtime);
// The line of a running install; absent for a step without one.
std::optional<std::string> installLine(const RuntimeInstall& install);

// The section's line when setup has nothing to say: the image's step, else where the image stands.
std::string imageLine(const std::string& runtime, const std::string& image, double progress,
                      const std::string& imageNote);

// The desktop mode block: the paragraph over the switch, and the line under it when there is one.
std::string desktopLead(bool loaded, const std::map<std::string, bool>& agents);
std::optional<std::string> desktopUnder(bool loaded, bool busy, const std::map<std::string, bool>& agents);
// On when every agent that answered has the tool.
bool desktopOn(const std::map<std::string, bool>& agents);

} // namespace orvan::SandboxWords
