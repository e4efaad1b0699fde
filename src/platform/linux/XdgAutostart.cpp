#include "platform/linux/XdgAutostart.h"

#include "bridge/Carryover.h"
#include "foundation/Files.h"
#include "foundation/Text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace orvan {

namespace fs = std::filesystem;

namespace {
constexpr std::string_view reserved = " \t\n\"'\\><~|&;$*?#()`";

// A line of the [Desktop Entry] group, split at its first '=' with the spaces around it dropped.
std::optional<std::string> keyIn(const std::string& text, std::string_view wanted) {
    bool inEntry = false;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string_view line(text.data() + start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            inEntry = line == "[Desktop Entry]";
            continue;
        }
        if (!inEntry) continue;
        size_t eq = line.find('=');
        if (eq == std::string_view::npos) continue;
        std::string_view key = line.substr(0, eq);
        while (!key.empty() && key.back() == ' ')
            key.remove_suffix(1);
        if (key != wanted) continue;
        std::string_view value = line.substr(eq + 1);
        while (!value.empty() && value.front() == ' ')
            value.remove_prefix(1);
        return std::string(value);
    }
    return std::nullopt;
}
} // namespace

XdgAutostart::XdgAutostart(Environment environment, fs::path executable, std::vector<std::string> arguments)
    : environment_(std::move(environment)), executable_(std::move(executable)),
      arguments_(std::move(arguments)) {}

fs::path XdgAutostart::file() const {
    return DataFolder::configHome(environment_) / "autostart" / (std::string(Carryover::bundle) + ".desktop");
}

std::string XdgAutostart::execArgument(const std::string& argument) {
    std::string quoted;
    if (argument.empty() || argument.find_first_of(reserved) != std::string::npos) {
        quoted = "\"";
        for (char c : argument) {
            if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
            quoted += c;
        }
        quoted += '"';
    } else {
        quoted = argument;
    }
    // The value is then read as a string (backslash escapes) and for field codes ('%').
    std::string out;
    for (char c : quoted) {
        switch (c) {
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        case '\r': out += "\\r"; break;
        case '%': out += "%%"; break;
        default: out += c;
        }
    }
    return out;
}

std::optional<std::string> XdgAutostart::entry(const fs::path& executable) {
    const std::string& path = executable.native();
    if (!executable.is_absolute() || !Text::isValidUtf8(path)) return std::nullopt;
    bool unwritable = std::any_of(path.begin(), path.end(), [](char c) {
        auto u = static_cast<unsigned char>(c);
        return (u < 0x20 && c != '\n' && c != '\t' && c != '\r') || u == 0x7f;
    });
    if (unwritable) return std::nullopt;
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Version=1.4\n"
           "Name=Orvan Companion\n"
           "Comment=Keep the bridge to your phone running and see its state\n"
           "Icon=" +
           std::string(Carryover::bundle) +
           "\n"
           "Exec=" +
           execArgument(path) + " " + launchedAtLoginFlag +
           "\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

bool XdgAutostart::registerItem(std::string& error) {
    auto text = entry(executable_);
    if (!text) {
        error = "the program's path can't be written in a desktop entry: " + executable_.string();
        return false;
    }
    if (!Files::write(file(), *text)) {
        error = "couldn't write " + file().string();
        return false;
    }
    return true;
}

bool XdgAutostart::unregisterItem(std::string& error) {
    std::error_code ec;
    fs::remove(file(), ec);
    if (ec) {
        error = "couldn't remove " + file().string() + ": " + ec.message();
        return false;
    }
    return true;
}

LoginItem::Status XdgAutostart::status() const {
    auto text = Files::read(file());
    if (!text) return Status::NotRegistered;
    // Either key is how a desktop's own settings switch an entry off without deleting it.
    if (keyIn(*text, "Hidden") == "true") return Status::NotRegistered;
    if (keyIn(*text, "X-GNOME-Autostart-enabled") == "false") return Status::NotRegistered;
    return Status::Enabled;
}

bool XdgAutostart::launchedAtLogin() const {
    return std::find(arguments_.begin(), arguments_.end(), launchedAtLoginFlag) != arguments_.end();
}

} // namespace orvan
