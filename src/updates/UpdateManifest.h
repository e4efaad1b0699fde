#pragma once
// A release description that passed every rule: what the feed says the latest version is, where its
// package lives, and how big and what digest it must be.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace orvan {

// A sentence to show about a release that can't be used.
struct UpdateNotice {
    std::string text;
    bool operator==(const UpdateNotice&) const = default;
};

struct UpdateManifest {
    std::string version;
    std::string build;
    std::string url;
    std::int64_t size = 0;
    std::string sha256;
    // The oldest system that runs it; empty when any does.
    std::string minimumMacOS;
    std::string notes;
    std::string published;
    bool operator==(const UpdateManifest&) const = default;

    static constexpr const char* unreadable =
        "The update server's description of the latest version could not be read. Check again later.";
    // The package's extension on this platform.
    static constexpr const char* packageExtension = "tgz";
    static constexpr std::int64_t largest = 1073741824;

    // Checked whole; any failure is `unreadable`.
    static std::variant<UpdateManifest, UpdateNotice> parse(std::string_view data);
    // `<base>/companion/latest.json` when that is an https address with a host.
    static std::optional<std::string> address(std::string_view base);
};

} // namespace orvan
