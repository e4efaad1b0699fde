#include "bridge/Carryover.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace orvan::Carryover {

namespace fs = std::filesystem;

namespace {
// A rename that refuses to land on anything already there. A plain rename would silently replace an
// empty folder that appeared after the check, which is the one merge we promise never to make.
bool moveWithoutReplacing(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // Filesystems without the flag: the existence check just made is all the guard there is.
    std::error_code ec;
    fs::rename(from, to, ec);
    return !ec;
}
} // namespace

void moveFolder(const fs::path& in) {
    const fs::path old = in / oldFolder;
    const fs::path now = in / folder;
    std::error_code ec;
    // Not following links: the link an earlier run left behind must stop this one.
    fs::file_status oldStatus = fs::symlink_status(old, ec);
    if (ec || oldStatus.type() != fs::file_type::directory) return;
    fs::file_status newStatus = fs::symlink_status(now, ec);
    if (!ec && newStatus.type() != fs::file_type::not_found) return;
    if (!moveWithoutReplacing(old, now)) return;
    fs::create_directory_symlink(now, old, ec);
}

bool copySettings(const std::string& from, const std::string& into, const Environment& environment) {
    auto target = UserDefaults::domain(into, environment);
    if (!target->all().empty()) return false;
    auto source = UserDefaults::domain(from, environment);
    Json values = source->all();
    if (values.empty()) return false;
    return target->replaceAll(std::move(values));
}

bool carryLogin(bool launchedAtLogin, bool enabled, UserDefaults& defaults,
                const std::function<bool(std::string& error)>& registerItem) {
    if (defaults.boolean(loginSettledKey) == true) return false;
    if (enabled) {
        defaults.set(loginSettledKey, true);
        return false;
    }
    if (!launchedAtLogin) return false;
    std::string error;
    // A failed attempt stores nothing, so the next launch at login tries again.
    if (!registerItem || !registerItem(error)) return false;
    defaults.set(loginSettledKey, true);
    return true;
}

} // namespace orvan::Carryover
