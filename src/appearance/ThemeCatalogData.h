#pragma once
// The palettes' colours as generated from palettes.md (scripts/theme-tables.sh). Only the
// catalog reads this; everyone else asks `ThemeCatalog`.

#include "appearance/ThemeTones.h"

#include <vector>

namespace orvan::ThemeCatalogData {

struct Entry {
    const char* id;
    const char* name;
    ThemeTones light;
    ThemeTones dark;
};

// In the catalog's order.
const std::vector<Entry>& entries();

} // namespace orvan::ThemeCatalogData
