#include "accounts/ShellCommand.h"

namespace orvan::ShellCommand {

namespace {
bool asciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// C0 controls and DEL; also C1 controls written in UTF-8 (U+0080..U+009F), which some
// terminals still obey.
bool holdsControl(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        if (c < 0x20 || c == 0x7F) return true;
        if (c == 0xC2 && i + 1 < text.size()) {
            auto next = static_cast<unsigned char>(text[i + 1]);
            if (next >= 0x80 && next <= 0x9F) return true;
        }
    }
    return false;
}
} // namespace

bool isName(const std::string& name) {
    if (name.empty() || !(asciiLetter(name[0]) || name[0] == '_')) return false;
    for (char c : name)
        if (!(asciiLetter(c) || (c >= '0' && c <= '9') || c == '_')) return false;
    return true;
}

std::string quote(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'') out += "'\\''";
        else out.push_back(c);
    }
    return out + "'";
}

std::optional<std::string> line(const std::vector<std::string>& argv, const std::map<std::string, std::string>& env) {
    if (argv.empty() || argv.front().empty() || argv.front().front() == '-') return std::nullopt;
    for (const auto& arg : argv)
        if (holdsControl(arg)) return std::nullopt;
    for (const auto& [name, value] : env)
        if (!isName(name) || holdsControl(value)) return std::nullopt;
    std::string out;
    // std::map keeps the names sorted.
    for (const auto& [name, value] : env) out += name + "=" + quote(value) + " ";
    for (std::size_t i = 0; i < argv.size(); ++i) out += (i ? " " : "") + quote(argv[i]);
    return out;
}

} // namespace orvan::ShellCommand

namespace orvan::AppleScriptText {

std::string literal(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '\\') out += "\\\\";
        else if (c == '"') out += "\\\"";
        else out.push_back(c);
    }
    return out + "\"";
}

std::string terminal(const std::string& runningLine) {
    return "tell application \"Terminal\"\n\tdo script " + literal(runningLine) + "\n\tactivate\nend tell";
}

} // namespace orvan::AppleScriptText
