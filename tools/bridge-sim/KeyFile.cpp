#include "KeyFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvan::sim::KeyFile {

namespace fs = std::filesystem;

namespace {

std::optional<std::string> variable(const Environment& environment, const std::string& name) {
    auto it = environment.find(name);
    if (it == environment.end() || it->second.empty()) return std::nullopt;
    return it->second;
}

std::string trimmed(const std::string& text) {
    const char* blanks = " \t\r\n\v\f";
    auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::string> randomHex(size_t bytes) {
    std::ifstream random("/dev/urandom", std::ios::binary);
    std::string raw(bytes, '\0');
    if (!random.read(raw.data(), static_cast<std::streamsize>(bytes))) return std::nullopt;
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (unsigned char byte : raw) {
        hex += digits[byte >> 4];
        hex += digits[byte & 15];
    }
    return hex;
}

bool writeAll(int fd, const std::string& text) {
    const char* p = text.data();
    size_t left = text.size();
    while (left > 0) {
        ssize_t n = ::write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        left -= static_cast<size_t>(n);
    }
    return true;
}

// Whole or not at all, and never over a key another process has just made: the file appears by a
// hard link, which fails when the name is taken.
bool create(const fs::path& path, const std::string& key) {
    std::string temp = (path.parent_path() / ".local.key.XXXXXX").string();
    int fd = ::mkstemp(temp.data());
    if (fd < 0) return false;
    bool ok = ::fchmod(fd, 0600) == 0 && writeAll(fd, key + "\n") && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::link(temp.c_str(), path.c_str()) == 0;
    ::unlink(temp.c_str());
    return ok;
}

} // namespace

fs::path folder(const Environment& environment) {
    if (auto dir = variable(environment, "ORVAN_DIR")) return *dir;
    if (auto dir = variable(environment, "TULM_MOBILE_DIR")) return *dir;
    // A relative XDG_DATA_HOME is ignored, as the base directory rules say.
    if (auto data = variable(environment, "XDG_DATA_HOME"); data && data->front() == '/') return fs::path(*data) / "Orvan";
    fs::path home;
    if (auto value = variable(environment, "HOME")) home = *value;
    else if (const passwd* user = ::getpwuid(::getuid())) home = user->pw_dir;
    else home = "/";
    return home / ".local/share/Orvan";
}

std::optional<std::string> ensure(const fs::path& folder, std::string& problem) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        fs::create_directories(folder, error);
        if (error) {
            problem = "Could not make the data folder " + folder.string() + ": " + error.message();
            return std::nullopt;
        }
        fs::permissions(folder, fs::perms::owner_all, error);
    }
    fs::path path = folder / "local.key";
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (fs::exists(path, error)) {
            std::ifstream in(path, std::ios::binary);
            std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
            if (!in.good() && !in.eof()) {
                problem = "Could not read " + path.string() + ".";
                return std::nullopt;
            }
            std::string key = trimmed(text);
            if (!key.empty()) return key;
            // An empty key would let a request without the header through; replace it.
            fs::remove(path, error);
        }
        auto key = randomHex(32);
        if (!key) {
            problem = "Could not read /dev/urandom.";
            return std::nullopt;
        }
        if (create(path, *key)) return key;
        // Someone else made the file meanwhile: read theirs on the next turn.
    }
    problem = "Could not write " + path.string() + ": " + std::strerror(errno);
    return std::nullopt;
}

} // namespace orvan::sim::KeyFile
