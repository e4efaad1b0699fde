#pragma once
// The owner's wish to keep the machine up with the lid closed, kept across launches in lid.json in
// the program's own data folder (never the bridge's folder).

#include "foundation/Carryover.h"

#include <filesystem>

namespace orvan::LidStore {

std::filesystem::path file(const Environment& environment);
// False for a missing file, bad JSON or a missing `on`.
bool read(const Environment& environment);
// A failed write is dropped: the wish stays in memory for this launch.
void write(const Environment& environment, bool on);

} // namespace orvan::LidStore
