#pragma once
// Unpacking a release package (a gzip-compressed tar of the bundle folder) into a fresh folder.
// Only plain files and folders come out: absolute paths, "..", links of either kind, devices,
// pipes and set-id bits refuse the whole package, as do too many entries or too many bytes.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace orvan::UpdateArchive {

struct Limits {
    std::size_t entries = 100000;
    std::int64_t bytes = 4LL * 1024 * 1024 * 1024;
};

// Unpacks `package` into `into`, which must not exist yet (it is made 0700). Answers none on
// success, else why it refused (for tests and logs; the owner sees a fixed sentence).
std::optional<std::string> extract(const std::filesystem::path& package, const std::filesystem::path& into,
                                   Limits limits = {});

} // namespace orvan::UpdateArchive
