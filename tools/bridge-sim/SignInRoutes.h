#pragma once
// The sign-in family of the computers' local API: what can sign in on a computer, and starting,
// reading, answering with a code and cancelling one agent's sign-in there.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::SignInRoutes {

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::SignInRoutes
