#pragma once
// The sandbox line on a computer's card: Docker and the sandbox desktop there, how far a build
// has come, the card's own sentence, and the buttons that set them up.

#include "computers/Hosts.h"
#include "ui/Node.h"

#include <string>

namespace orvan::HostSandboxRow {

// The status line, from the host's Docker state and the last reading of its sandboxes.
std::string status(const CompanionHost& host, const HostSandbox* reading);

ui::Node build(Hosts& hosts, const CompanionHost& host);

} // namespace orvan::HostSandboxRow
