#include "updates/UpdateArchive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace orvan::UpdateArchive {

namespace {

// The decompressed stream, read in whole 512-byte records.
class Stream {
public:
    explicit Stream(const std::filesystem::path& path) : file_(gzopen(path.c_str(), "rb")) {
        if (file_) gzbuffer(file_, 256 * 1024);
    }
    ~Stream() {
        if (file_) gzclose(file_);
    }
    bool ok() const { return file_ != nullptr; }
    // Exactly `n` bytes, or false.
    bool read(char* into, std::size_t n) {
        while (n > 0) {
            int got = gzread(file_, into, static_cast<unsigned>(std::min<std::size_t>(n, 1 << 20)));
            if (got <= 0) return false;
            into += got;
            n -= static_cast<std::size_t>(got);
        }
        return true;
    }

private:
    gzFile file_;
};

std::optional<std::int64_t> octal(const char* field, std::size_t size) {
    // Base-256 sizes are for files beyond 8 GiB, which no release has.
    if (static_cast<unsigned char>(field[0]) & 0x80) return std::nullopt;
    std::int64_t value = 0;
    std::size_t i = 0;
    while (i < size && (field[i] == ' ' || field[i] == '\0')) ++i;
    for (; i < size && field[i] >= '0' && field[i] <= '7'; ++i) {
        if (value > (std::int64_t{1} << 58)) return std::nullopt;
        value = value * 8 + (field[i] - '0');
    }
    for (; i < size; ++i)
        if (field[i] != ' ' && field[i] != '\0') return std::nullopt;
    return value;
}

std::string cString(const char* field, std::size_t size) { return std::string(field, strnlen(field, size)); }

bool checksumHolds(const char* h) {
    auto stored = octal(h + 148, 8);
    if (!stored) return false;
    std::int64_t sum = 0;
    for (int i = 0; i < 512; ++i) sum += (i >= 148 && i < 156) ? ' ' : static_cast<unsigned char>(h[i]);
    return sum == *stored;
}

// A relative path of plain pieces, without "." or ".." anywhere; a trailing "/" is dropped.
std::optional<std::string> safePath(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    while (path.rfind("./", 0) == 0) path.erase(0, 2);
    if (path.empty() || path.front() == '/' || path.find('\0') != std::string::npos) return std::nullopt;
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = std::min(path.find('/', start), path.size());
        std::string piece = path.substr(start, end - start);
        if (piece.empty() || piece == "." || piece == "..") return std::nullopt;
        start = end + 1;
    }
    return path;
}

// Makes each missing folder on the way, never following a link.
bool makeParents(const std::filesystem::path& root, const std::string& relative) {
    std::filesystem::path at = root;
    std::filesystem::path parts = std::filesystem::path(relative).parent_path();
    for (const auto& piece : parts) {
        at /= piece;
        struct stat info {};
        if (::lstat(at.c_str(), &info) == 0) {
            if (!S_ISDIR(info.st_mode)) return false;
        } else if (::mkdir(at.c_str(), 0755) != 0) {
            return false;
        }
    }
    return true;
}

std::string paxPath(const std::string& records) {
    std::string found;
    std::size_t at = 0;
    while (at < records.size()) {
        std::size_t space = records.find(' ', at);
        if (space == std::string::npos) break;
        std::size_t length = std::strtoul(records.substr(at, space - at).c_str(), nullptr, 10);
        if (length == 0 || at + length > records.size()) break;
        std::string record = records.substr(space + 1, length - (space - at) - 2);
        if (record.rfind("path=", 0) == 0) found = record.substr(5);
        at += length;
    }
    return found;
}

} // namespace

std::optional<std::string> extract(const std::filesystem::path& package, const std::filesystem::path& into, Limits limits) {
    Stream stream(package);
    if (!stream.ok()) return "the package can't be opened";
    if (::mkdir(into.c_str(), 0700) != 0) return "the folder to unpack into can't be made";
    std::array<char, 512> header{};
    std::size_t entries = 0;
    std::int64_t total = 0;
    std::string longName;
    std::vector<char> buffer(1 << 20);
    while (true) {
        if (!stream.read(header.data(), header.size())) return "the package ends early";
        if (std::all_of(header.begin(), header.end(), [](char c) { return c == 0; })) return std::nullopt;
        if (!checksumHolds(header.data())) return "a header is damaged";
        if (++entries > limits.entries) return "too many entries";
        const char type = header[156];
        auto size = octal(header.data() + 124, 12);
        auto mode = octal(header.data() + 100, 8);
        if (!size || !mode || *size < 0) return "a header is damaged";
        const std::int64_t padded = (*size + 511) / 512 * 512;
        total += *size;
        if (total > limits.bytes) return "too many bytes";

        if (type == 'L' || type == 'x' || type == 'g') {
            // A long name (or a pax record holding one) for the entry that follows.
            if (*size > 64 * 1024) return "a name is too long";
            std::string data(static_cast<std::size_t>(padded), '\0');
            if (!stream.read(data.data(), data.size())) return "the package ends early";
            data.resize(static_cast<std::size_t>(*size));
            if (type == 'L') longName = cString(data.data(), data.size());
            else if (type == 'x') {
                if (auto p = paxPath(data); !p.empty()) longName = p;
            }
            continue;
        }

        std::string name = longName;
        longName.clear();
        if (name.empty()) {
            name = cString(header.data(), 100);
            std::string prefix = cString(header.data() + 345, 155);
            if (std::memcmp(header.data() + 257, "ustar", 5) == 0 && header[262] == '\0' && !prefix.empty())
                name = prefix + "/" + name;
        }
        auto path = safePath(name);
        if (!path) return "an entry's path leaves the folder: " + name;
        if (*mode & 07000) return "an entry has set-id bits: " + name;
        if (type == '1' || type == '2') return "an entry is a link: " + name;
        if (type != '0' && type != '\0' && type != '5' && type != '7') return "an entry is not a file or folder: " + name;
        if (!makeParents(into, *path)) return "an entry's folder is not a folder: " + name;
        const std::filesystem::path target = into / *path;

        if (type == '5') {
            struct stat info {};
            if (::lstat(target.c_str(), &info) == 0) {
                if (!S_ISDIR(info.st_mode)) return "a folder stands where a file is: " + name;
            } else if (::mkdir(target.c_str(), 0700) != 0) {
                return "a folder can't be made: " + name;
            }
            ::chmod(target.c_str(), static_cast<mode_t>((*mode & 0777) | 0700));
            for (std::int64_t left = padded; left > 0;) {
                std::size_t n = static_cast<std::size_t>(std::min<std::int64_t>(left, static_cast<std::int64_t>(buffer.size())));
                if (!stream.read(buffer.data(), n)) return "the package ends early";
                left -= static_cast<std::int64_t>(n);
            }
            continue;
        }
        int fd = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd < 0) return "a file can't be written (twice in the package?): " + name;
        std::int64_t left = padded, body = *size;
        bool written = true;
        while (left > 0 && written) {
            std::size_t n = static_cast<std::size_t>(std::min<std::int64_t>(left, static_cast<std::int64_t>(buffer.size())));
            if (!stream.read(buffer.data(), n)) {
                ::close(fd);
                return "the package ends early";
            }
            std::size_t keep = static_cast<std::size_t>(std::min<std::int64_t>(body, static_cast<std::int64_t>(n)));
            for (std::size_t at = 0; at < keep;) {
                ssize_t w = ::write(fd, buffer.data() + at, keep - at);
                if (w < 0 && errno == EINTR) continue;
                if (w <= 0) {
                    written = false;
                    break;
                }
                at += static_cast<std::size_t>(w);
            }
            body -= static_cast<std::int64_t>(keep);
            left -= static_cast<std::int64_t>(n);
        }
        bool closed = ::fchmod(fd, static_cast<mode_t>(*mode & 0777)) == 0;
        closed = ::close(fd) == 0 && closed;
        if (!written || !closed) return "a file can't be written: " + name;
    }
}

} // namespace orvan::UpdateArchive
