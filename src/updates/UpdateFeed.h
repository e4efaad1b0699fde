#pragma once
// The release feed: where the description of the latest release is read, and how.

#include "platform/Web.h"
#include "updates/UpdateManifest.h"

#include <optional>
#include <string>
#include <variant>

namespace orvan::UpdateFeed {

inline constexpr const char* unreachable =
    "This Mac could not reach the update server. Check the connection, then check again.";

// The feed of the downloads base fixed at build time; none when the build has no base, or it is
// not an https address.
std::optional<std::string> manifestURL(const std::string& downloadsBase);

// The running system's version as "<major>.<minor>.<patch>". Here the system a release can
// require is the C library, since that is what a build binds to.
std::string system();

Task<std::variant<UpdateManifest, UpdateNotice>> latest(Web& web, std::optional<std::string> from);

} // namespace orvan::UpdateFeed
