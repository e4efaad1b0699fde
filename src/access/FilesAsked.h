#pragma once
// Who last had the folders asked about: the system ties the owner's answers to the program's
// signing identity, so a build from another signer must ask again.

#include "foundation/UserDefaults.h"

#include <optional>
#include <string>

namespace orvan {

struct FilesAsked {
    static constexpr const char* key = "files.asked";

    std::string team;
    std::string bundle;

    // Absent when never stored, or stored as something else.
    static std::optional<FilesAsked> load(const UserDefaults& defaults);
    void store(UserDefaults& defaults) const;
    bool operator==(const FilesAsked&) const = default;
};

} // namespace orvan
