#include "sandboxes/SandboxWords.h"

#include "foundation/Text.h"
#include "sandboxes/SandboxImage.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace orvan::SandboxWords {

std::string state(const std::string& word) {
    if (word == "running") return "Running";
    if (word == "preparing") return "Preparing";
    if (word == "starting") return "Starting";
    if (word == "stopped") return "Stopped";
    if (word == "failed") return "Did not start";
    return word;
}

std::string title(const CompanionSandbox& sandbox) {
    return "Session " + Text::prefixCharacters(sandbox.session, 8);
}

std::string detail(const CompanionSandbox& sandbox) {
    std::string out = state(sandbox.state);
    if (sandbox.keep) out += " · saved";
    if (sandbox.watching && !sandbox.watching->empty()) {
        std::string names;
        for (const auto& name : *sandbox.watching) names += (names.empty() ? "" : ", ") + name;
        out += " · watched by " + names;
    }
    return out;
}

std::string stopHelp(bool keep) {
    return keep ? "Stops this sandbox. It is saved: its disk stays, and it starts again as it was."
                : "Stops this sandbox and throws it away. The agent's next call starts a fresh one.";
}

std::string installName(const std::string& runtime) {
    return runtime == "docker" ? "Docker Desktop" : "Apple's container tool";
}

std::optional<std::string> installLine(const RuntimeInstall& install) {
    std::string name = installName(install.runtime.value_or(""));
    std::string step = install.step.value_or("");
    std::string note = install.note.value_or("");
    if (step == "downloading") {
        double share = install.progress && std::isfinite(*install.progress) ? std::clamp(*install.progress, 0.0, 1.0) : 0.0;
        return "Downloading " + name + "… " + std::to_string(static_cast<int>(std::trunc(share * 100))) + "%";
    }
    if (step == "checking") return "Checking " + name + " is signed by its maker and notarized by Apple…";
    if (step == "installing") return note.empty() ? "Installing " + name + "…" : note;
    if (step == "starting") return note.empty() ? "Starting " + name + "…" : note;
    if (step == "failed") return name + " was not set up. " + note;
    return std::nullopt;
}

std::string imageLine(const std::string& runtime, const std::string& image, double progress,
                      const std::string& imageNote) {
    std::string name = runtime == "container" ? "Apple's container tool" : "Docker";
    if (auto step = SandboxImage::step(image, progress, "this Mac")) return *step;
    if (image == "ready") return "Ready: " + name + ", with the sandbox desktop here. A sandbox starts in seconds.";
    if (image == "missing")
        return "Sandboxes run under " + name +
               ". Get the sandbox desktop now, once, and a sandbox starts in seconds; otherwise the first sandbox gets it.";
    if (image == "failed")
        return imageNote.empty() ? "The sandbox desktop could not be made. The next sandbox tries again." : imageNote;
    return "Sandboxes run under " + name + ".";
}

namespace {
std::vector<std::string> agentNames(const std::map<std::string, bool>& agents) {
    std::vector<std::string> names;
    if (agents.count("claude")) names.push_back("Claude Code");
    if (agents.count("codex")) names.push_back("Codex");
    return names;
}
} // namespace

std::string desktopLead(bool loaded, const std::map<std::string, bool>& agents) {
    if (!loaded) return "Checking the agents on this Mac…";
    auto names = agentNames(agents);
    if (names.empty())
        return "A sandbox Linux desktop for each session's agent: a whole computer, apart from this Mac. Claude Code and "
               "Codex are not installed here, so no agent gets it yet.";
    std::string joined = names.size() == 2 ? names[0] + " and " + names[1] : names[0];
    return joined +
           " get a sandbox Linux desktop for each session: a whole Debian computer with a desktop, a terminal, "
           "developer tools, Google Chrome and sudo, on this Mac but apart from it. Not the same as Remote desktop, "
           "which shares this Mac's own screen. You watch the agent from the session's Desktop tab and take over with "
           "a touch.";
}

std::optional<std::string> desktopUnder(bool loaded, bool busy, const std::map<std::string, bool>& agents) {
    if (busy) return "Changing Claude Code's and Codex's settings…";
    if (!loaded) return "Asking Claude Code and Codex whether they have the tool. This takes a few seconds.";
    if (agentNames(agents).empty()) return "Neither Claude Code nor Codex is installed on this Mac.";
    return std::nullopt;
}

bool desktopOn(const std::map<std::string, bool>& agents) {
    // With no agent here there is nothing for the switch to stand for, so it reads off.
    return !agents.empty() && std::all_of(agents.begin(), agents.end(), [](const auto& a) { return a.second; });
}

} // namespace orvan::SandboxWords
