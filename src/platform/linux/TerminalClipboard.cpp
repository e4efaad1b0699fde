#include "platform/linux/TerminalClipboard.h"

#include <QByteArray>
#include <fcntl.h>
#include <unistd.h>

namespace orvan {

bool TerminalClipboard::putText(const std::string& text, bool) {
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
