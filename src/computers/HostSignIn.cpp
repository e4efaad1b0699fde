#include "computers/HostSignIn.h"

#include "foundation/Text.h"

#include <QUrl>

namespace orvan::HostSignIn {

std::string title(const std::string& tool) {
    if (tool == "claude") return "Claude";
    if (tool == "codex") return "Codex";
    if (tool == "grok") return "Grok";
    if (tool == "cursor") return "Cursor";
    if (tool == "gemini") return "Gemini";
    std::string out = tool;
    if (!out.empty() && out[0] >= 'a' && out[0] <= 'z') out[0] = static_cast<char>(out[0] - 'a' + 'A');
    return out;
}

std::optional<std::string> page(const std::string& text) {
    if (text.empty() || !Text::isValidUtf8(text)) return std::nullopt;
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid() || url.scheme().toLower() != "https" || url.host().isEmpty()) return std::nullopt;
    // Any user part, even an empty one, is a page that would sign in as someone the owner never chose.
    if (!url.userInfo().isEmpty() || url.authority(QUrl::FullyEncoded).contains('@')) return std::nullopt;
    return url.toString(QUrl::FullyEncoded).toStdString();
}

std::optional<std::string> cleanCode(const std::string& text) {
    if (!Text::isValidUtf8(text)) return std::nullopt;
    std::string code = Text::trimmed(text);
    if (code.empty() || code.size() > codeBytes) return std::nullopt;
    for (char16_t unit : Text::toUtf16(code))
        if (unit < 0x20 || (unit >= 0x7f && unit <= 0x9f)) return std::nullopt;
    return code;
}

std::string heading(const std::string& name) { return "Sign in agents on " + name; }

std::string intro(const std::string& name) {
    return "Runs an agent's own sign-in on " + name +
           ", when copying this Mac's accounts there does not work or there is none to copy. You finish it in this "
           "Mac's browser.";
}

std::string line(const HostSignInTool& tool, const std::optional<HostSignInState>& running) {
    if (running && !running->isOver()) return "Signing in now";
    if (tool.installed && tool.headless) {
        if (tool.lands == "own") return "Not signed in. Signs in as its own sign-in there.";
        if (tool.lands == "account") return "Signed in. A new sign-in adds an account there.";
    }
    return tool.note.empty() ? std::string("Does not sign in from here.") : tool.note;
}

std::string steps(const HostSignInState& state) {
    if (!state.code.empty())
        return "Open the page, sign in, and enter this code when it asks. It is copied, so you can paste it there.";
    if (state.paste) return "Open the page and sign in. When it shows a code, copy it and paste it below.";
    return "Open the page and sign in. This finishes by itself once you have.";
}

std::string verifying(const std::string& tool) { return "Checking with " + title(tool) + " that it is signed in…"; }

std::string result(const HostSignInState& state, const std::string& tool, const std::string& computer) {
    if (state.lands != "account") return title(tool) + " is signed in on " + computer + ".";
    if (!state.label.empty())
        return title(tool) + " signed in on " + computer + " as a new account, " + state.label + ".";
    return title(tool) + " signed in as a new account on " + computer + ".";
}

std::string startHelp(const std::string& tool, const std::string& name) {
    return "Runs " + title(tool) + "'s own sign-in on " + name + ", for you to finish in this Mac's browser.";
}

Json body(const std::string& target, const std::string& tool, const std::optional<std::string>& code) {
    Json out{{"target", target}};
    if (!tool.empty()) out["tool"] = tool;
    if (code) out["code"] = *code;
    return out;
}

} // namespace orvan::HostSignIn
