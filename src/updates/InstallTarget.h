#pragma once
// Which installed bundle an update replaces, and whether replacing it needs an administrator.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct InstallTarget {
    std::filesystem::path url;
    bool admin = false; // the parent folder isn't writable by this user
    bool operator==(const InstallTarget&) const = default;

    // The bundle folder's name, and the folders a system-wide copy stands in.
    static constexpr const char* bundleName = "orvan-companion";
    static constexpr const char* systemFolder = "opt";

    using Test = std::function<bool(const std::filesystem::path&)>;
    // The pure form of the choice, handed the three file tests.
    static std::optional<InstallTarget> choose(const std::filesystem::path& running,
                                               const std::vector<std::filesystem::path>& candidates,
                                               const Test& writable, const Test& exists, const Test& companion);
    // With the real tests.
    static std::optional<InstallTarget> target(const std::filesystem::path& running,
                                               const std::vector<std::filesystem::path>& candidates);
    // "/opt/orvan-companion", then "~/.local/opt/orvan-companion".
    static std::vector<std::filesystem::path> candidates(const std::filesystem::path& home);
    // Info.json names this program.
    static bool isCompanion(const std::filesystem::path& bundle);
    // The bundle belongs to the Debian package: dpkg lists its files, so only dpkg may change them.
    static bool packaged(const std::filesystem::path& bundle, const std::filesystem::path& dpkgInfo);
};

// What a bundle's Info.json says about it; absent keys stay absent.
struct BundleInfo {
    std::optional<std::string> identifier, shortVersion, version, executable, downloads;
    static std::optional<BundleInfo> read(const std::filesystem::path& bundle);
};

} // namespace orvan
