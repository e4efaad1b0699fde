#pragma once
// The simulator's own paths under /_sim/, through which tests make it misbehave, reset it, and
// play the part of phones and viewers. No real bridge serves these.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::Control {

constexpr const char* prefix = "/_sim/";

bool owns(const std::string& path);
Reply answer(Sim& sim, const std::string& method, const std::string& path, const std::string& body, TimePoint now);

} // namespace orvan::sim::Control
