#pragma once
// The release the owner turned down, kept in update.json in the data folder.

#include "foundation/Carryover.h"

#include <filesystem>
#include <optional>
#include <string>

namespace orvan::UpdateStore {

std::filesystem::path file(const Environment& environment);
// None on any failure.
std::optional<std::string> dismissed(const Environment& environment);
// Written atomically, 0600; a failure is silent.
void dismiss(const Environment& environment, const std::string& version);

} // namespace orvan::UpdateStore
