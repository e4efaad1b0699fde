#pragma once
// The local API as the companion uses it: method and path to an answer.

#include "Reply.h"
#include "Sim.h"

#include <string>

namespace orvan::sim::Routes {

// Every path the bridge serves, /healthz included; a 404 or 405 for anything else. `target` is the
// path with its query, if any.
Reply answer(Sim& sim, const std::string& method, const std::string& target, const std::string& body, TimePoint now);

// The answer of --wrong-type: valid JSON that the companion's decoder for this path must refuse.
std::string wrongShape(const std::string& path);

// Parses a request body as a JSON object; an empty body counts as {} where `emptyIsObject`.
std::optional<nlohmann::json> object(const std::string& body, bool emptyIsObject);

// An id as it arrives in one path segment or query value: only %XX escapes are undone.
std::string unescaped(const std::string& raw);

} // namespace orvan::sim::Routes
