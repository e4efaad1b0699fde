#pragma once
// The access record's file, "Orvan/permissions.json" in the user's data folder. It follows the
// program's identity, not a bridge: a data folder chosen for a bridge doesn't move it.

#include "access/AccessRecord.h"
#include "foundation/Carryover.h"

#include <filesystem>

namespace orvan::AccessStore {

std::filesystem::path file(const Environment& environment);
AccessRecord read(const Environment& environment);
// Failures are dropped: the record in memory stays good for this launch.
void write(const Environment& environment, const AccessRecord& record);

} // namespace orvan::AccessStore
