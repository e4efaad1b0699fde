#include "foundation/Files.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace orvan {

namespace fs = std::filesystem;

bool Files::makeFolder(const fs::path& folder) {
    // Each missing folder is made private, whatever the umask says; folders already there are the
    // owner's business and keep their modes.
    fs::path made;
    for (const auto& part : folder) {
        made /= part;
        if (::mkdir(made.c_str(), 0700) != 0 && errno != EEXIST) return false;
    }
    std::error_code ec;
    return fs::is_directory(folder, ec);
}

bool Files::write(const fs::path& path, std::string_view bytes) {
    if (path.has_parent_path()) makeFolder(path.parent_path());
    std::string temp = (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
    int fd = ::mkstemp(temp.data());
    if (fd < 0) return false;
    const char* p = bytes.data();
    size_t left = bytes.size();
    bool ok = true;
    while (left > 0) {
        ssize_t n = ::write(fd, p, left);
        if (n < 0) {
            if (errno == EINTR) continue;
            ok = false;
            break;
        }
        p += n;
        left -= static_cast<size_t>(n);
    }
    if (ok && ::fsync(fd) != 0) ok = false;
    if (::close(fd) != 0) ok = false;
    if (ok && ::rename(temp.c_str(), path.c_str()) != 0) ok = false;
    if (!ok) {
        ::unlink(temp.c_str());
        return false;
    }
    ::chmod(path.c_str(), 0600);
    return true;
}

std::optional<std::string> Files::read(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::string out((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad()) return std::nullopt;
    return out;
}

namespace {
fs::path home(const Environment& environment) {
    if (auto it = environment.find("HOME"); it != environment.end() && !it->second.empty()) return it->second;
    return "/";
}

fs::path xdg(const Environment& environment, const char* name, const char* fallback) {
    // Relative values are ignored, as the XDG base directory rules say.
    if (auto it = environment.find(name); it != environment.end() && !it->second.empty() && it->second[0] == '/')
        return it->second;
    return home(environment) / fallback;
}
} // namespace

fs::path DataFolder::dataHome(const Environment& environment) {
    return xdg(environment, "XDG_DATA_HOME", ".local/share");
}

fs::path DataFolder::standard(const Environment& environment) { return dataHome(environment) / "Orvan"; }

fs::path DataFolder::earlier(const Environment& environment) { return dataHome(environment) / "tulm-mobile"; }

fs::path DataFolder::bridge(const Environment& environment) {
    if (auto dir = Carryover::env("ORVAN_DIR", environment)) return *dir;
    return standard(environment);
}

fs::path DataFolder::configHome(const Environment& environment) {
    return xdg(environment, "XDG_CONFIG_HOME", ".config");
}

} // namespace orvan
