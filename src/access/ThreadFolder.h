#pragma once
// A folder the phone may start a direct thread in, as the bridge lists it.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct ThreadFolder {
    std::string id;
    std::string name;
    std::string path;

    // Loose: a field of the wrong type reads as empty, but a row without an id is no row.
    static std::optional<ThreadFolder> decode(const Json& j);
    bool operator==(const ThreadFolder&) const = default;
};

} // namespace orvan
