#pragma once
// The question for sudo's password when a Docker install there needs one. The password is kept
// only while the sheet stands, goes into one request, and is wiped from the sheet as it goes.

#include "computers/ComputersViewState.h"
#include "computers/Hosts.h"
#include "ui/Node.h"

#include <functional>
#include <string>

namespace orvan::SudoSheet {

// Why Docker needs the password, for `user` (the host's user, or "this user").
std::string dockerWhy(const std::string& user);

ui::Node build(Hosts& hosts, ComputersViewState& state, std::function<void()> changed);

} // namespace orvan::SudoSheet
