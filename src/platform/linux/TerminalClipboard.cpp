#include "platform/linux/TerminalClipboard.h"

#include <QByteArray>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvan {

namespace {
// The test record: our own regular file, never through a link, readable by this user alone.
bool record(const char* path, const std::string& text, bool concealed) {
    int fd = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    struct stat info {};
    const std::string line = (concealed ? std::string("(concealed)") : text) + "\n";
    bool ok = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == ::getuid() &&
              ::write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    ::close(fd);
    return ok;
}
} // namespace

bool TerminalClipboard::putText(const std::string& text, bool concealed) {
    if (const char* path = std::getenv(testRecord); path && *path) return record(path, text, concealed);
    // A terminal has no history marking; the request replaces the clipboard like any copy.
    int tty = ::open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (tty < 0) return false;
    const QByteArray request = "\x1b]52;c;" + QByteArray::fromStdString(text).toBase64() + "\x07";
    ssize_t written = ::write(tty, request.constData(), static_cast<size_t>(request.size()));
    ::close(tty);
    return written == request.size();
}

bool TerminalClipboard::putTextAndImages(const std::string& text, const std::vector<std::filesystem::path>& pictures) {
    std::string all = text;
    for (const auto& picture : pictures) all += "\n" + picture.string();
    return putText(all, false);
}

} // namespace orvan
