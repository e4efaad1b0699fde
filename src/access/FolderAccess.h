#pragma once
// One row of the bridge's report on the folders files from the phone go to.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct FolderAccess {
    std::string name;
    std::string path;
    // "allowed", "refused", "missing", or something newer this program doesn't know.
    std::string state;

    static std::optional<FolderAccess> decode(const Json& j);
    bool operator==(const FolderAccess&) const = default;
};

} // namespace orvan
