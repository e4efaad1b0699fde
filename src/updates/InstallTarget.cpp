#include "updates/InstallTarget.h"

#include "foundation/Files.h"
#include "foundation/Json.h"

#include <fstream>
#include <unistd.h>

namespace orvan {

namespace {
bool named(const std::filesystem::path& p) { return p.filename() == InstallTarget::bundleName; }
} // namespace

std::optional<InstallTarget> InstallTarget::choose(const std::filesystem::path& running,
                                                   const std::vector<std::filesystem::path>& candidates,
                                                   const Test& writable, const Test& exists, const Test& companion) {
    auto usable = [&](const std::filesystem::path& p) { return named(p) && exists(p) && companion(p); };
    if (usable(running) && writable(running.parent_path())) return InstallTarget{running, false};
    for (const auto& candidate : candidates)
        if (usable(candidate)) return InstallTarget{candidate, !writable(candidate.parent_path())};
    if (usable(running) && running.parent_path().filename() == systemFolder) return InstallTarget{running, true};
    return std::nullopt;
}

std::optional<InstallTarget> InstallTarget::target(const std::filesystem::path& running,
                                                   const std::vector<std::filesystem::path>& candidates) {
    auto writable = [](const std::filesystem::path& p) { return ::access(p.c_str(), W_OK) == 0; };
    auto exists = [](const std::filesystem::path& p) {
        std::error_code ec;
        return std::filesystem::is_directory(p, ec);
    };
    return choose(running.lexically_normal(), candidates, writable, exists, isCompanion);
}

std::vector<std::filesystem::path> InstallTarget::candidates(const std::filesystem::path& home) {
    return {std::filesystem::path("/") / systemFolder / bundleName, home / ".local" / systemFolder / bundleName};
}

std::optional<BundleInfo> BundleInfo::read(const std::filesystem::path& bundle) {
    auto bytes = Files::read(bundle / "Info.json");
    if (!bytes || bytes->size() > 64 * 1024) return std::nullopt;
    auto root = json::parse(*bytes);
    if (!root || !root->is_object()) return std::nullopt;
    auto text = [&](const char* key) -> std::optional<std::string> {
        auto it = root->find(key);
        if (it == root->end() || !it->is_string()) return std::nullopt;
        return it->get<std::string>();
    };
    BundleInfo info;
    info.identifier = text("CFBundleIdentifier");
    info.shortVersion = text("CFBundleShortVersionString");
    info.version = text("CFBundleVersion");
    info.executable = text("CFBundleExecutable");
    info.downloads = text("OrvanDownloads");
    return info;
}

bool InstallTarget::isCompanion(const std::filesystem::path& bundle) {
    auto info = BundleInfo::read(bundle);
    return info && info->identifier == ORVAN_BUNDLE_ID;
}

bool InstallTarget::packaged(const std::filesystem::path& bundle, const std::filesystem::path& dpkgInfo) {
    std::ifstream list(dpkgInfo / (std::string(bundleName) + ".list"));
    const std::string wanted = (bundle.lexically_normal() / "Info.json").string();
    std::string line;
    while (std::getline(list, line))
        if (line == wanted) return true;
    return false;
}

} // namespace orvan
