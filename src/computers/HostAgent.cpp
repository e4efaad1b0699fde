#include "computers/HostAgent.h"

namespace orvan {

const std::vector<HostAgent>& HostAgent::catalog() {
    // The addresses are each maker's published installer; the bridge runs them, this only tells the owner.
    static const std::vector<HostAgent> all{
        {"claude", "Claude Code",
         "Installs with Anthropic's own installer, curl -fsSL https://claude.ai/install.sh | bash, into ~/.local/bin."},
        {"codex", "Codex",
         "Installs with OpenAI's own installer, curl -fsSL "
         "https://github.com/openai/codex/releases/latest/download/install.sh | sh, into ~/.local/bin."},
        {"grok", "Grok", "Installs with xAI's own installer, curl -fsSL https://x.ai/cli/install.sh | bash, into ~/.grok/bin."},
        {"cursor", "Cursor",
         "Installs Cursor's agent with Cursor's own installer, curl https://cursor.com/install -fsS | bash, into "
         "~/.local/bin."},
        {"gemini", "Gemini", "Installs Google's @google/gemini-cli package with npm, into ~/.npm-global."},
    };
    return all;
}

const HostAgent& HostAgent::node() {
    static const HostAgent row{
        "node", "Node.js",
        "The current long-term-support Node.js from nodejs.org, checked against nodejs.org's published checksums, "
        "which guards against a corrupted download, into ~/.local/node. Claude's and Codex's threads start their "
        "adapters with npx, and Gemini installs with npm."};
    return row;
}

const std::set<std::string>& HostAgent::needNode() {
    static const std::set<std::string> names{"claude", "codex", "gemini"};
    return names;
}

std::string HostAgent::titleOf(const std::string& name) {
    for (const auto& agent : catalog())
        if (agent.name == name) return agent.title;
    if (name == node().name) return node().title;
    return name;
}

} // namespace orvan
